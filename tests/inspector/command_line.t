  $ . "$TESTDIR/setup.sh"

  $ for words in '' nosuch 'decode --from octal Dial' 'list nosuch' 'log --follow --count x' 'log --serial x' \
  >     'mask in' 'mask --trust-type in out' 'mask --from hex in out' 'encode --capture x --to hex Dial' \
  >     'diff x' 'diff --trust-type Dial x y' 'diff Hangup d.pcap' 'diff Hangup - -' \
  >     'diff --from hex x y'; do
  >   inspect $words
  > done
  virtual-modem-inspect: A subcommand is required (see --help)
  virtual-modem-inspect: there is no command nosuch (see --help)
  virtual-modem-inspect: --from: octal is not one of array|auto|base64|binary|hex|log|string (see --help)
  virtual-modem-inspect: what: nosuch is not one of messages|enums|fields|values (see --help)
  virtual-modem-inspect: --count excludes --follow (see --help)
  virtual-modem-inspect: --serial: x is not a 32-bit number (see --help)
  virtual-modem-inspect: mask takes IN... OUT (see --help)
  virtual-modem-inspect: --trust-type requires --type (see --help)
  virtual-modem-inspect: --from requires --type (see --help)
  virtual-modem-inspect: --to excludes --capture (see --help)
  virtual-modem-inspect: diff takes [TYPE] LEFT RIGHT (see --help)
  virtual-modem-inspect: --trust-type requires --redact (see --help)
  virtual-modem-inspect: to compare two messages of type Hangup, name two files: Hangup LEFT RIGHT (see --help)
  virtual-modem-inspect: only one side can be read from - (see --help)
  virtual-modem-inspect: --from is for two messages of a type (see --help)
  [2]
  $ for words in 'decode Dail' 'decode Dial /nonexistent' '--schema /nonexistent list' '--schema card.bin list'; do inspect $words; done
  virtual-modem-inspect: there is no message Dail; did you mean Call or Dial?
  virtual-modem-inspect: /nonexistent: No such file or directory
  virtual-modem-inspect: cannot read the descriptor set /nonexistent; name it with --schema or VIRTUAL_MODEM_DESCRIPTOR_SET
  virtual-modem-inspect: card.bin is not a descriptor set
  [1]
  $ mkdir bin && cp "$INSPECT" bin && VIRTUAL_MODEM_DESCRIPTOR_SET= bin/virtual-modem-inspect list 2>&1 | sed "s|$PWD||"
  virtual-modem-inspect: cannot read the descriptor set /share/virtual-modem-protos/virtual-modem-protos.binpb; name it with --schema or VIRTUAL_MODEM_DESCRIPTOR_SET
  $ for words in --help list; do inspect $words >/dev/full; done
  virtual-modem-inspect: cannot write to standard output
  virtual-modem-inspect: cannot write to standard output
  [1]
  $ inspect decode IccCardStatusResponse card.bin >&-
  virtual-modem-inspect: standard output is closed
  [1]
  $ echo '1 53:53 - 00' | "$TESTDIR/make_capture.py" >foreign.pcap
  $ inspect mask foreign.pcap masked.pcap 2>&- && wc -c <masked.pcap
  24
  $ inspect decode IccCardStatusResponse <&-
  virtual-modem-inspect: standard input: Bad file descriptor
  [1]
  $ yes "$(inspect encode --delimited IccCardStatusResponse card.txt | base64 -w0)" | base64 -d | timeout 20 "$INSPECT" decode --delimited IccCardStatusResponse >/dev/full
  virtual-modem-inspect: cannot write to standard output
  [1]
  $ inspect --version | sed "s/ $VERSION$/ VERSION/"
  virtual-modem-inspect VERSION

A message has at most 16 MiB, whichever way it comes:

  $ head -c 17000000 /dev/zero >large
  $ (head -c 110000000 /dev/zero && echo 'all was read' >&2) | inspect decode Dial
  virtual-modem-inspect: standard input: over 16 MiB, too large for one message (a stream needs --delimited)
  [1]
  $ inspect decode --from hex Dial <(yes 00000000 | head -n 4250000)
  virtual-modem-inspect: /dev/fd/63: over 16 MiB, too large for one message (a stream needs --delimited)
  [1]
  $ inspect encode Dial <(echo "address: \"$(head -c 17000000 /dev/zero | tr '\0' a)\"") --partial 2>&1 | tail -n 1
  virtual-modem-inspect: /dev/fd/63: the message is over 16 MiB
  $ inspect identify <(head -c 262145 large)
  virtual-modem-inspect: /dev/fd/63: 262145 bytes; types are tried on 256 KiB at most
  [1]

The manual page knows every option:

  $ for command in '' decode log mask encode identify describe list diff; do
  >   inspect $command --help | grep -o -e '--[a-z-]*' | sort -u >"options.$command"
  >   sed 's/^-/Fl /' "options.$command" | grep -vxFf <(grep -o 'Fl -[a-z-]*' "$SOURCE/tools/virtual-modem-inspect.1")
  > done
  [1]
