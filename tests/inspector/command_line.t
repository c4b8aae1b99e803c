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
  virtual-modem-inspect: --from: octal is not one of array|auto|base64|binary|hex|log|string (see --help)
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
  $ for words in --help --version 'log --help' 'list'; do inspect $words >/dev/full; echo $?; done
  virtual-modem-inspect: cannot write to standard output
  1
  virtual-modem-inspect: cannot write to standard output
  1
  virtual-modem-inspect: cannot write to standard output
  1
  virtual-modem-inspect: cannot write to standard output
  1
  $ inspect decode IccCardStatusResponse card.bin >&-
  virtual-modem-inspect: standard output is closed
  [1]
  $ inspect decode IccCardStatusResponse <&-
  virtual-modem-inspect: standard input: Bad file descriptor
  [1]
  $ yes "$(inspect encode --delimited IccCardStatusResponse card.txt | base64 -w0)" | base64 -d | timeout 20 "$INSPECT" decode --delimited IccCardStatusResponse >/dev/full
  virtual-modem-inspect: cannot write to standard output
  [1]
  $ inspect --version
  virtual-modem-inspect 1.0.0

Whatever an input or its name holds acts on no terminal:

  $ inspect decode Dial $'\e[2J\302\233m\342\200\256\xff\xc3\xa9'
  virtual-modem-inspect: \\x1b[2J\\xc2\\x9bm\\xe2\\x80\\xae\\xff\xc3\xa9: No such file or directory (esc)
  [1]
  $ inspect describe $'\342\201\246x'
  virtual-modem-inspect: nothing is called \xe2\x81\xa6x
  [1]

A message has at most 16 MiB, whichever way it comes:

  $ head -c 17000000 /dev/zero >large
  $ inspect decode Dial large
  virtual-modem-inspect: large: over 16 MiB, too large for one message (a stream needs --delimited)
  [1]
  $ inspect decode --from hex Dial <(yes 00000000 | head -n 4250000)
  virtual-modem-inspect: /dev/fd/63: over 16 MiB, too large for one message (a stream needs --delimited)
  [1]
  $ inspect encode Dial <(echo "address: \"$(head -c 17000000 /dev/zero | tr '\0' a)\"") --partial 2>&1 | tail -n 1
  virtual-modem-inspect: /dev/fd/63: the message is over 16 MiB
  $ inspect identify <(head -c 262145 large)
  virtual-modem-inspect: /dev/fd/63: 262145 bytes; types are tried on 256 KiB at most
  [1]
  $ inspect diff Dial large card.bin
  virtual-modem-inspect: large: over 16 MiB, too large for one message (a stream needs --delimited)
  [1]
  $ (printf '\200\200\200\020'; cat large) | inspect decode --delimited Dial 2>&1 | tail -n 1
  virtual-modem-inspect: standard input: no length of a message at byte 0 (is this a stream of delimited messages?)

The manual page knows every option:

  $ for command in '' decode log mask encode identify describe list diff; do
  >   inspect $command --help | grep -o -e '--[a-z-]*' | sort -u >"options.$command"
  >   sed 's/^-/Fl /' "options.$command" | grep -vxFf <(grep -o 'Fl -[a-z-]*' "$SOURCE/tools/virtual-modem-inspect.1")
  > done
  [1]
