// The benchmark's messages as plain records: what a caller holds before it builds a message and
// after it has read one. One field list per record makes its members, fills the message class from
// them, digests the message's fields, and drives the straight-line codec.
#pragma once

#include <virtual_modem/data_share.pb.h>
#include <virtual_modem/ims_service.pb.h>
#include <virtual_modem/radio.pb.h>

#include <cstdint>
#include <string>
#include <vector>

namespace virtual_modem::bench {

// The straight-line codec keeps its position in a register only when all of it is inlined.
#define VIRTUAL_MODEM_INLINE inline __attribute__((always_inline))

// Reading a field: every scalar counts with its value, a text with its length and last byte.
inline std::uint64_t Digest(std::uint64_t value) { return value; }
inline std::uint64_t Digest(const std::string& text) {
  return text.size() + (text.empty() ? 0 : static_cast<unsigned char>(text.back()));
}

// A field list calls F(KIND, number, type, name) for each field in the order of the numbers. KIND
// is SCALAR, TEXT, RECORD, or the plural of the last two for a repeated field.
#define MEMBER(kind, number, type, name) type name{};

#define FILL(kind, number, type, name) FILL_##kind(name)
#define FILL_SCALAR(name) message.set_##name(static_cast<decltype(message.name())>(name));
#define FILL_TEXT(name) message.set_##name(name);
#define FILL_TEXTS(name) \
  for (const std::string& text : (name)) message.add_##name(text);
#define FILL_RECORD(name) name.Fill(*message.mutable_##name());
#define FILL_RECORDS(name) \
  for (const auto& element : (name)) element.Fill(*message.add_##name());

#define READ(kind, number, type, name) READ_##kind(type, name)
#define READ_SCALAR(type, name) sum += Digest(static_cast<std::uint64_t>(message.name()));
#define READ_TEXT(type, name) sum += Digest(message.name());
#define READ_TEXTS(type, name) \
  for (const std::string& text : message.name()) sum += Digest(text);
#define READ_RECORD(type, name) sum += type::Read(message.name());
#define READ_RECORDS(type, name) \
  for (const auto& element : message.name()) sum += type::value_type::Read(element);

#define VISIT(kind, number, type, name) visitor(number, record.name);

#define RECORD(Record, MessageClass, FIELDS)                                         \
  struct Record {                                                                    \
    using Message = MessageClass;                                                    \
    FIELDS(MEMBER)                                                                   \
    void Fill(Message& message) const { FIELDS(FILL) }                               \
    static std::uint64_t Read(const Message& message) {                              \
      std::uint64_t sum = 0;                                                         \
      FIELDS(READ)                                                                   \
      return sum;                                                                    \
    }                                                                                \
    template <typename Self, typename Visitor>                                       \
    VIRTUAL_MODEM_INLINE static void ForEachField(Self& record, Visitor&& visitor) { \
      FIELDS(VISIT)                                                                  \
    }                                                                                \
  };

using std::int32_t;
using std::uint32_t;

#define NO_RESULT_FIELDS(F)           \
  F(SCALAR, 1, int32_t, platformtype) \
  F(SCALAR, 2, int32_t, serial)       \
  F(SCALAR, 3, int32_t, error)
RECORD(NoResultRecord, NoResultResponse, NO_RESULT_FIELDS)

#define DIAL_FIELDS(F)                \
  F(SCALAR, 1, int32_t, platformtype) \
  F(SCALAR, 2, int32_t, serial)       \
  F(TEXT, 3, std::string, address)    \
  F(SCALAR, 4, int32_t, clir)
RECORD(DialRecord, Dial, DIAL_FIELDS)

#define COMMON_CALL_FIELDS(F)                \
  F(SCALAR, 1, int32_t, state)               \
  F(SCALAR, 2, int32_t, index)               \
  F(SCALAR, 3, int32_t, toa)                 \
  F(SCALAR, 4, bool, ismpty)                 \
  F(SCALAR, 5, bool, ismt)                   \
  F(SCALAR, 6, bool, als)                    \
  F(SCALAR, 7, bool, isvoice)                \
  F(SCALAR, 8, bool, isvoiceprivacy)         \
  F(TEXT, 9, std::string, number)            \
  F(SCALAR, 10, int32_t, numberpresentation) \
  F(TEXT, 11, std::string, name)             \
  F(SCALAR, 12, int32_t, namepresentation)
RECORD(CallRecord, Call, COMMON_CALL_FIELDS)

#define CURRENT_CALLS_FIELDS(F)       \
  F(SCALAR, 1, int32_t, platformtype) \
  F(SCALAR, 2, int32_t, serial)       \
  F(SCALAR, 3, int32_t, error)        \
  F(RECORDS, 4, std::vector<CallRecord>, calls)
RECORD(CurrentCallsRecord, GetCurrentCallsResponse, CURRENT_CALLS_FIELDS)

#define GSM_FIELDS(F)                    \
  F(SCALAR, 1, uint32_t, signalstrength) \
  F(SCALAR, 2, uint32_t, biterrorrate)   \
  F(SCALAR, 3, int32_t, timingadvance)
RECORD(GsmRecord, GsmSignalStrength, GSM_FIELDS)

#define CDMA_FIELDS(F)        \
  F(SCALAR, 1, uint32_t, dbm) \
  F(SCALAR, 2, uint32_t, ecio)
RECORD(CdmaRecord, CdmaSignalStrength, CDMA_FIELDS)

#define EVDO_FIELDS(F)         \
  F(SCALAR, 1, uint32_t, dbm)  \
  F(SCALAR, 2, uint32_t, ecio) \
  F(SCALAR, 3, uint32_t, signalnoiseratio)
RECORD(EvdoRecord, EvdoSignalStrength, EVDO_FIELDS)

#define LTE_FIELDS(F)                    \
  F(SCALAR, 1, uint32_t, signalstrength) \
  F(SCALAR, 2, uint32_t, rsrp)           \
  F(SCALAR, 3, uint32_t, rsrq)           \
  F(SCALAR, 4, int32_t, rssnr)           \
  F(SCALAR, 5, uint32_t, cqi)            \
  F(SCALAR, 6, uint32_t, timingadvance)
RECORD(LteRecord, LteSignalStrength, LTE_FIELDS)

#define TDSCDMA_FIELDS(F)                \
  F(SCALAR, 1, uint32_t, signalstrength) \
  F(SCALAR, 2, uint32_t, biterrorrate)   \
  F(SCALAR, 3, uint32_t, rscp)
RECORD(TdscdmaRecord, TdscdmaSignalStrength, TDSCDMA_FIELDS)

#define WCDMA_FIELDS(F)                 \
  F(SCALAR, 1, int32_t, signalstrength) \
  F(SCALAR, 2, int32_t, biterrorrate)   \
  F(SCALAR, 3, uint32_t, rscp)          \
  F(SCALAR, 4, uint32_t, ecno)
RECORD(WcdmaRecord, WcdmaSignalStrength, WCDMA_FIELDS)

#define NR_FIELDS(F)             \
  F(SCALAR, 1, int32_t, ssrsrp)  \
  F(SCALAR, 2, int32_t, ssrsrq)  \
  F(SCALAR, 3, int32_t, sssinr)  \
  F(SCALAR, 4, int32_t, csirsrp) \
  F(SCALAR, 5, int32_t, csirsrq) \
  F(SCALAR, 6, int32_t, csisinr)
RECORD(NrRecord, NrSignalStrength, NR_FIELDS)

#define SIGNAL_STRENGTH_FIELDS(F)      \
  F(RECORD, 1, GsmRecord, gsm)         \
  F(RECORD, 2, CdmaRecord, cdma)       \
  F(RECORD, 3, EvdoRecord, evdo)       \
  F(RECORD, 4, LteRecord, lte)         \
  F(RECORD, 5, TdscdmaRecord, tdscdma) \
  F(RECORD, 6, WcdmaRecord, wcdma)     \
  F(RECORD, 7, NrRecord, nr)
RECORD(SignalStrengthRecord, SignalStrength, SIGNAL_STRENGTH_FIELDS)

#define SIGNAL_CHANGED_FIELDS(F)      \
  F(SCALAR, 1, int32_t, platformtype) \
  F(RECORD, 2, SignalStrengthRecord, signalstrength)
RECORD(SignalChangedRecord, SignalStrengthChanged, SIGNAL_CHANGED_FIELDS)

#define SETUP_DATA_CALL_FIELDS(F)                \
  F(SCALAR, 1, int32_t, value1)                  \
  F(SCALAR, 2, int32_t, value2)                  \
  F(SCALAR, 3, int32_t, value3)                  \
  F(SCALAR, 4, int32_t, value4)                  \
  F(SCALAR, 5, int32_t, value5)                  \
  F(SCALAR, 6, int32_t, value6)                  \
  F(SCALAR, 7, int32_t, value7)                  \
  F(TEXTS, 8, std::vector<std::string>, list8)   \
  F(TEXTS, 9, std::vector<std::string>, list9)   \
  F(TEXTS, 10, std::vector<std::string>, list10) \
  F(SCALAR, 11, int32_t, value11)                \
  F(SCALAR, 12, int32_t, value12)
RECORD(SetupDataCallRecord, ::virtualdata::proto::SlaveSetupDataCallResponse,
       SETUP_DATA_CALL_FIELDS)

#define APP_STATUS_FIELDS(F)           \
  F(SCALAR, 1, int32_t, apptype)       \
  F(SCALAR, 2, int32_t, appstate)      \
  F(SCALAR, 3, int32_t, persosubstate) \
  F(TEXT, 4, std::string, aid)         \
  F(TEXT, 5, std::string, applabel)    \
  F(SCALAR, 6, int32_t, pin1replaced)  \
  F(SCALAR, 7, int32_t, pin1)          \
  F(SCALAR, 8, int32_t, pin2)
RECORD(AppStatusRecord, AppStatus, APP_STATUS_FIELDS)

#define CARD_STATUS_1_0_FIELDS(F)                    \
  F(SCALAR, 1, int32_t, cardstate)                   \
  F(SCALAR, 2, int32_t, universalpinstate)           \
  F(SCALAR, 3, int32_t, gsmumtssubscriptionappindex) \
  F(SCALAR, 4, int32_t, cdmasubscriptionappindex)    \
  F(SCALAR, 5, int32_t, imssubscriptionappindex)     \
  F(RECORDS, 6, std::vector<AppStatusRecord>, applications)
RECORD(CardStatus10Record, V1_0_CardStatus, CARD_STATUS_1_0_FIELDS)

#define CARD_STATUS_1_2_FIELDS(F)        \
  F(RECORD, 1, CardStatus10Record, base) \
  F(SCALAR, 2, uint32_t, physicalslotid) \
  F(TEXT, 3, std::string, atr)           \
  F(TEXT, 4, std::string, iccid)
RECORD(CardStatus12Record, V1_2_CardStatus, CARD_STATUS_1_2_FIELDS)

#define CARD_STATUS_FIELDS(F)         \
  F(SCALAR, 1, int32_t, platformtype) \
  F(SCALAR, 2, int32_t, serial)       \
  F(SCALAR, 3, int32_t, error)        \
  F(RECORD, 4, CardStatus12Record, cardstatus)
RECORD(CardStatusRecord, IccCardStatusResponse, CARD_STATUS_FIELDS)

#define IMS_CALL_FIELDS(F)           \
  COMMON_CALL_FIELDS(F)              \
  F(SCALAR, 14, int32_t, audiocodec) \
  F(SCALAR, 15, int32_t, calltype)   \
  F(SCALAR, 19, int32_t, callrat)
RECORD(ImsCallRecord, QImsCall, IMS_CALL_FIELDS)

#define IMS_CALLS_FIELDS(F)           \
  F(SCALAR, 1, int32_t, platformtype) \
  F(SCALAR, 2, int32_t, value)        \
  F(RECORDS, 3, std::vector<ImsCallRecord>, calls)
RECORD(ImsCallsRecord, ImsCallStateChanged, IMS_CALLS_FIELDS)

#undef RECORD
#undef VISIT
#undef READ_RECORDS
#undef READ_RECORD
#undef READ_TEXTS
#undef READ_TEXT
#undef READ_SCALAR
#undef READ
#undef FILL_RECORDS
#undef FILL_RECORD
#undef FILL_TEXTS
#undef FILL_TEXT
#undef FILL_SCALAR
#undef FILL
#undef MEMBER

}  // namespace virtual_modem::bench
