  $ command -v zsh >/dev/null || exit 80
  $ cp "$SOURCE/tools/virtual-modem-inspect.bash" _virtual-modem-inspect
  $ cat >complete.zsh <<'ZSH'
  > fpath+=($PWD); autoload -Uz compinit && compinit -u -D
  > print $_comps[virtual-modem-inspect]
  > . ./_virtual-modem-inspect 2>/dev/null
  > while read -r line; do
  >   words=($INSPECT ${=line}) CURRENT=$#words
  >   COMP_WORDS=($words) COMP_CWORD=$((CURRENT - 1))
  >   compgen -F _virtual_modem_inspect -- $words[-1] | grep -e ^$words[-1]
  > done
  > ZSH
  $ zsh -f complete.zsh <<'LINES'
  > iden
  > decode virtualdata.proto.SlaveDeac
  > decode --from=bas
  > describe Dial.clir=CLIR_SUP
  > mask --trust-type --ty
  > LINES
  _virtual-modem-inspect
  identify
  virtualdata.proto.SlaveDeactivateDataCallRequest
  --from=base64
  Dial.clir=CLIR_SUPPRESSION
  --type
