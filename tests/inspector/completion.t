  $ . "$TESTDIR/setup.sh"
  $ . "$SOURCE/tools/virtual-modem-inspect.bash"
  $ completions() {
  >   COMP_WORDS=("$INSPECT" "$@") COMP_CWORD=$#
  >   _virtual_modem_inspect "$INSPECT" "${@: -1}" "${COMP_WORDS[-2]}"
  >   echo "${COMPREPLY[@]}"
  > }
  $ while read -r words; do eval completions $words; done <<'WORDS'
  > --
  > decode --delimited Dial --from b
  > --schema x decode --from hex Hang
  > decode --from = he
  > decode --from =
  > decode SlaveD
  > decode virtualdata.proto.SlaveD
  > describe Dial.clir = CLIR_S
  > log --unit r
  > log --grep clir
  > log --grep clir = CLIR_S
  > mask --trust-type --ty
  > list v
  > WORDS
  --help --version --schema
  base64 binary
  Hangup
  hex
  array auto base64 binary hex log string
  SlaveDeactivateDataCallRequest
  virtualdata.proto.SlaveDeactivateDataCallRequest
  CLIR_SUPPRESSION
  radio
  clir
  CLIR_SUPPRESSION
  --type
  values
