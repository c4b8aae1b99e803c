# What the transcripts have in common; each sources it first.
inspect() { "$INSPECT" "$@"; }

# A whole IccCardStatusResponse, in the text format.
cat >card.txt <<'TEXT'
platformtype: UNKNOW
serial: 7
error: RADIO_E_SUCCESS
cardstatus {
  base {
    cardstate: CARD_PRESENT
    universalpinstate: PIN_UNKNOWN
    gsmumtssubscriptionappindex: 0
    cdmasubscriptionappindex: -1
    imssubscriptionappindex: -1
    applications {
      apptype: APPTYPE_USIM
      appstate: APPSTATE_READY
      aid: "a0000000871002"
      applabel: "USIM"
      pin1: PIN_DISABLED
      pin2: PIN_ENABLED_NOT_VERIFIED
    }
  }
  physicalslotid: 0
  atr: "3b9f96801f"
  iccid: "8988211000000123456"
}
TEXT
inspect encode IccCardStatusResponse card.txt >card.bin
