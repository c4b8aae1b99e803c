  $ . "$TESTDIR/setup.sh"

  $ inspect
  virtual-modem-inspect: A subcommand is required (see --help)
  [2]
  $ inspect nosuch
  virtual-modem-inspect: there is no command nosuch (see --help)
  [2]
  $ inspect decode
  virtual-modem-inspect: type is required (see --help)
  [2]
  $ inspect decode --from octal Dial
  virtual-modem-inspect: --from: octal is not one of auto, binary, hex, base64 (see --help)
  [2]
  $ inspect decode --nosuch Dial
  virtual-modem-inspect: The following argument was not expected: --nosuch (see --help)
  [2]
  $ inspect list nosuch
  virtual-modem-inspect: what: nosuch not in {messages,enums,fields,values} (see --help)
  [2]
  $ inspect decode Dail
  virtual-modem-inspect: there is no message Dail; did you mean Call or Dial?
  [1]
  $ inspect decode Dial /nonexistent
  virtual-modem-inspect: /nonexistent: No such file or directory
  [1]
  $ inspect decode IccCardStatusResponse card.bin >/dev/full
  virtual-modem-inspect: cannot write to standard output
  [1]
  $ inspect --schema /nonexistent list
  virtual-modem-inspect: cannot read the descriptor set /nonexistent; name it with --schema or VIRTUAL_MODEM_DESCRIPTOR_SET
  [1]
  $ inspect --schema card.bin list
  virtual-modem-inspect: card.bin is not a descriptor set
  [1]
  $ VIRTUAL_MODEM_DESCRIPTOR_SET=/nonexistent inspect list
  virtual-modem-inspect: cannot read the descriptor set /nonexistent; name it with --schema or VIRTUAL_MODEM_DESCRIPTOR_SET
  [1]
  $ inspect --version
  virtual-modem-inspect 1.0.0

The manual page knows every option:

  $ for command in '' decode encode identify describe list diff; do
  >   inspect $command --help | grep -o -e '--[a-z]*' | sort -u >"options.$command"
  >   sed 's/^-/Fl /' "options.$command" | grep -vxFf <(grep -o 'Fl -[a-z]*' "$SOURCE/tools/virtual-modem-inspect.1")
  > done
  [1]
