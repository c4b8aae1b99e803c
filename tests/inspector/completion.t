  $ . "$TESTDIR/setup.sh"

Bash:

  $ . "$SOURCE/tools/virtual-modem-inspect.bash"
  $ completions() {
  >   COMP_WORDS=("$INSPECT" "$@") COMP_CWORD=$#
  >   _virtual_modem_inspect "$INSPECT" "${@: -1}" "${COMP_WORDS[-2]}"
  >   echo "${COMPREPLY[@]}"
  > }
  $ completions '' | tr ' ' '\n' | grep -c -e decode -e encode
  2
  $ completions --
  --help --version --schema
  $ completions decode --delimited Dial --from b
  base64 binary
  $ completions --schema x decode --from hex Hang
  Hangup
  $ completions decode --from = he
  hex
  $ completions decode --from =
  array auto base64 binary hex log string
  $ completions decode SlaveD
  SlaveDeactivateDataCallRequest
  $ completions decode virtualdata.proto.SlaveD
  virtualdata.proto.SlaveDeactivateDataCallRequest
  $ completions describe Dial.c
  Dial.clir
  $ completions describe Dial.clir = CLIR_S
  CLIR_SUPPRESSION
  $ completions log --unit r
  radio
  $ completions log --kind = re
  request response record
  $ completions log --grep clir
  clir
  $ completions log --grep clir = CLIR_S
  CLIR_SUPPRESSION
  $ completions mask --trust-type --ty
  --type
  $ completions diff Hang
  Hangup
  $ completions list v
  values
