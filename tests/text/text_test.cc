// What ../interop/compare.py cannot see: options, bytes that are no message, types and foreign
// messages.
#include <gmock/gmock.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "support/message_types.h"
#include "support/schema.h"

namespace virtual_modem {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

Dial MakeDial() {
  Dial dial;
  dial.set_platformtype(MTK);
  dial.set_serial(7);
  dial.set_address("+861012345678");
  dial.set_clir(CLIR_DEFAULT);
  return dial;
}

// A message that is none of the library's.
class Foreign : public google::protobuf::MessageLite {
 public:
  std::string GetTypeName() const override { return "Dial"; }  // the name decides nothing
  MessageLite* New(google::protobuf::Arena* /*arena*/) const override { return new Foreign; }
  void Clear() override {}
  bool IsInitialized() const override { return false; }
  void CheckTypeAndMergeFrom(const MessageLite& /*other*/) override {}
  std::size_t ByteSizeLong() const override { return 0; }
  int GetCachedSize() const override { return 0; }
  const char* _InternalParse(const char* at,
                             google::protobuf::internal::ParseContext* /*context*/) override {
    return at;
  }
  std::uint8_t* _InternalSerialize(
      std::uint8_t* to, google::protobuf::io::EpsCopyOutputStream* /*stream*/) const override {
    return to;
  }
};

TEST(Types, AreThoseOfTheSchemaInItsOrder) {
  const auto& expected = testing::AllMessageTypes();
  ASSERT_EQ(Types().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const Type& type = Types()[i];
    SCOPED_TRACE(type.name);
    EXPECT_EQ(type.name, expected[i].name);
    EXPECT_EQ(type.unit, expected[i].unit);
    EXPECT_EQ(type.prototype, &expected[i].prototype);
    EXPECT_EQ(FindType(type.name), &type);
    const std::unique_ptr<google::protobuf::MessageLite> message(type.prototype->New());
    EXPECT_EQ(&TypeOf(*message), &type);
    EXPECT_TRUE(Visit(*message, [&](const auto& m) { EXPECT_EQ(&m, message.get()); }));
    const auto& fields = testing::SchemaOf(type.name).fields;
    const auto has = [&](const char* name) {
      return std::any_of(fields.begin(), fields.end(),
                         [&](const auto& field) { return field.name == name; });
    };
    EXPECT_EQ(type.has_serial, has("serial"));
    EXPECT_EQ(type.has_error, has("error"));
  }
}

TEST(Types, HaveKindsAndSerialsAndNoOtherNames) {
  const auto kind = [](const char* name) { return std::string(KindName(FindType(name)->kind)); };
  EXPECT_EQ(kind("Dial"), "request");
  EXPECT_EQ(kind("NoResultResponse"), "response");
  EXPECT_EQ(kind("RadioCallRing"), "indication");
  EXPECT_EQ(kind("Call"), "record");
  EXPECT_EQ(SerialOf(MakeDial()), 7);
  EXPECT_EQ(SerialOf(Dial()), std::nullopt);
  EXPECT_EQ(SerialOf(RadioCallRing()), std::nullopt);
  for (const char* name : {"", "dial", "Dia", "Dialx", "SlaveSetupDataCallRequest", "zz", "\xff"}) {
    EXPECT_EQ(FindType(name), nullptr) << name;
  }
  EXPECT_EQ(FindType(std::string_view("Dial\0", 5)), nullptr);
}

TEST(Types, OfForeignMessagesAreNone) {
  const Foreign foreign;
  EXPECT_EQ(TypeOf(foreign).prototype, nullptr);
  EXPECT_STREQ(TypeOf(foreign).name, "");
  EXPECT_EQ(SerialOf(foreign), std::nullopt);
  EXPECT_FALSE(Visit(foreign, [](const auto& /*message*/) { FAIL(); }));
  EXPECT_EQ(ToText(foreign), "# a message of another library");
  EXPECT_THAT(MissingFields(foreign), ElementsAre());
  EXPECT_EQ(MaskedBytes(foreign), "");
}

TEST(Text, IsMaskedAndOnOneLineUnlessAskedOtherwise) {
  const Dial dial = MakeDial();
  EXPECT_EQ(ToText(dial),
            "platformtype: MTK serial: 7 address: \"XXXXXXXXXXXXX\" clir: CLIR_DEFAULT");
  EXPECT_EQ(ToText(dial, {true}),
            "platformtype: MTK serial: 7 address: \"+861012345678\" clir: CLIR_DEFAULT");
  EXPECT_EQ(ToText(dial, {true, false}),
            "platformtype: MTK\nserial: 7\naddress: \"+861012345678\"\nclir: CLIR_DEFAULT\n");
}

TEST(Text, IsCutToItsBoundWithWhatIsMissing) {
  Dial dial = MakeDial();
  EXPECT_EQ(ToText(dial, {true, true, 1}), " [... 71 more bytes]");
  for (const std::size_t digits : {13U, 5000U, 200'000U}) {
    dial.set_address(std::string(digits, '5'));
    const std::string whole = ToText(dial, {true, true, 0});
    EXPECT_THAT(whole, EndsWith("clir: CLIR_DEFAULT"));
    EXPECT_EQ(ToText(dial, {true, true, whole.size()}), whole);
    for (const std::size_t bound : {whole.size() - 1, std::size_t{60}, std::size_t{4000}}) {
      if (whole.size() <= bound) continue;
      SCOPED_TRACE(std::to_string(digits) + " digits in " + std::to_string(bound));
      const std::string text = ToText(dial, {true, true, bound});
      EXPECT_LE(text.size(), bound);
      EXPECT_GE(text.size() + 8, bound);  // the mark counts with fewer digits than were feared
      const std::size_t kept = text.find(" [... ");
      EXPECT_EQ(text, whole.substr(0, kept) + " [... " + std::to_string(whole.size() - kept) +
                          " more bytes]");
    }
  }
  EXPECT_EQ(ToText(dial).size(), 4000U);  // a line of a log
}

TEST(Text, OfBytesSaysWhereTheyBreak) {
  EXPECT_EQ(ToText("GetCurrentCallsResponse", "\x08\x01\x22\x04\x4a\x0d+8", {true}),
            "platformtype: QCOM calls { } # malformed at byte 6 in calls[0].number: 13 bytes "
            "announced, 2 left before the end of the input");
  EXPECT_EQ(ToText("GetCurrentCallsResponse", "\x08\x02\x16", {true, false}),
            "platformtype: MTK\n# malformed at byte 2 in serial: there is no wire type 6\n");
  EXPECT_EQ(ToText("Dial", "\x78\x05\x9e", {false, false}),
            "# unknown fields 15 (2 bytes)\n# malformed at byte 3: the input ends inside a tag\n");
}

TEST(Text, OfBytesThatMayBeAnotherTypesMasksAllStrings) {
  // A Dial read as an EmergencyNumber: its number stands where that has the operator's code.
  const std::string bytes = MakeDial().SerializeAsString();
  EXPECT_THAT(ToText("EmergencyNumber", bytes), Not(HasSubstr("8610")));
  EXPECT_EQ(MaskedBytes("EmergencyNumber", bytes).find("8610"), std::string::npos);
  EXPECT_THAT(ToText("EmergencyNumber", bytes, {true}), HasSubstr("8610"));
  // So may a list of numbers be the digits of a short message's address.
  const std::string digits = "\x08\x01\x10\x37\x10\x38\x08";
  EXPECT_THAT(ToText("RepeatUintResultIndication", digits),
              StartsWith("platformtype: QCOM result: 0 result: 0 # malformed"));
  EXPECT_EQ(MaskedBytes("RepeatUintResultIndication", digits),
            std::string("\x08\x01\x10\0\x10\0\x08", 7));
}

// What breaks, and where, is told of masked bytes as of the bytes themselves.
TEST(Masks, LeaveBreaksWhereTheyAre) {
  const std::string dial("\x08\x02\x10\x07", 4);
  for (const auto& [rest, masked] : std::vector<std::pair<std::string, std::string>>{
           {"\x1a\x09+49", "\x1a\x09XXX"},                                // a string is cut
           {"\x1a\x03+49\x20\xb7", "\x1a\x03XXX\x20\x80"},                // a number
           {"\x81\xb2", "\x80\x80"},                                      // a tag
           {"\x7a\x81\xb2\xb3\xb4\xb5+4", "\x7a\x80\x80\x80\x80\x80XX"},  // a length is too long
           {"\x1a\x80\x80\x80\x80\x08+", "\x1a\x80\x80\x80\x80\x08X"},    // ... or too large
           {"\x7b\x22\x02+4\x0e+4", "\x7b\x22\x02XX\x0eXX"},  // no wire type 6, in a group
           {"\x7b\x74+4", "\x7b\x74XX"},                      // another group ends
           {"\x07+4", "\x07XX"},                              // field number 0
       }) {
    const std::string copy = MaskedBytes("Dial", dial + rest);
    EXPECT_EQ(copy, dial + masked);
    EXPECT_THAT(ToText("Dial", copy), HasSubstr("# malformed at byte "));
    EXPECT_EQ(ToText("Dial", copy), ToText("Dial", dial + rest));
  }
  // Numbers that are masked keep their size, so that the break keeps its place.
  EXPECT_EQ(MaskedBytes("CellIndentityLte", "\x38\xb7\x01\x0e"), std::string("\x38\x80\0\x0e", 4));
}

TEST(Masks, JudgeFieldsInAnyOrder) {
  OperatorResponse message;
  message.set_platformtype(QCOM);
  message.set_serial(1);
  message.set_error(RADIO_E_SUCCESS);
  message.set_alphalong("Operator");
  message.set_alphashort("Op");
  message.set_numeric("00101");
  const std::string bytes = message.SerializeAsString();
  EXPECT_THAT(ToText("OperatorResponse", bytes.substr(6) + bytes.substr(0, 6)),
              HasSubstr("Operator"));
  // As a number, the name is another type's field.
  EXPECT_THAT(ToText("OperatorResponse", bytes + "\x20\x01"), Not(HasSubstr("Operator")));
  // A record that comes in pieces: each brings what the others lack, also in the record below.
  IccCardStatusResponse pieces[3];
  pieces[0].set_platformtype(QCOM);
  pieces[0].set_serial(1);
  pieces[0].set_error(RADIO_E_SUCCESS);
  pieces[0].mutable_cardstatus()->set_atr("3b9f");
  V1_0_CardStatus& base = *pieces[1].mutable_cardstatus()->mutable_base();
  base.set_cardstate(CARD_PRESENT);
  base.set_universalpinstate(PIN_UNKNOWN);
  base.set_gsmumtssubscriptionappindex(0);
  pieces[2].mutable_cardstatus()->mutable_base()->set_cdmasubscriptionappindex(0);
  pieces[2].mutable_cardstatus()->mutable_base()->set_imssubscriptionappindex(0);
  pieces[2].mutable_cardstatus()->set_physicalslotid(0);
  const auto shown = [&] {
    std::string all;
    for (const auto& piece : pieces) all.insert(0, piece.SerializePartialAsString());
    return ToText("IccCardStatusResponse", all).find("3b9f") != std::string::npos;
  };
  EXPECT_FALSE(shown());  // lacks the iccid
  pieces[1].mutable_cardstatus()->set_iccid("8986");
  EXPECT_TRUE(shown());
  // What an element of a list lacks, no other one brings.
  base.add_applications()->set_aid("a0");
  pieces[2].mutable_cardstatus()->mutable_base()->add_applications()->set_applabel("USIM");
  EXPECT_FALSE(shown());
}

// Lists do not count as depth.
TEST(Masks, ReachTheEndOfLongLists) {
  GetCurrentCallsResponse calls;
  for (int i = 0; i < 101; ++i) calls.add_calls()->set_number("5");
  const std::string masked = MaskedBytes(calls);
  EXPECT_EQ(masked.size(), calls.SerializePartialAsString().size());
  EXPECT_EQ(std::count(masked.begin(), masked.end(), 'X'), 101);
  Dial dial;
  for (int i = 0; i < 101; ++i) *dial.mutable_unknown_fields() += "\x53\x54";  // groups
  EXPECT_THAT(ToText("Dial", dial.SerializePartialAsString()), Not(HasSubstr("malformed")));
  dial.set_address(std::string(100'000, '5'));
  const std::string text = ToText(dial, {false, true, 0});
  EXPECT_EQ(std::count(text.begin(), text.end(), 'X'), 100'000);
  EXPECT_EQ(std::count(text.begin(), text.end(), '5'), 0);
}

TEST(Text, OfAnUnknownTypeShowsNothing) {
  EXPECT_EQ(ToText("Dia\"l\n", "secret", {true}),
            "# no message type \"Dia\\\"l\\n\", 6 bytes not shown");
  EXPECT_EQ(MaskedBytes("Dia", "secret"), "");
}

TEST(MissingFields, AreNamedInTheOrderOfTheSchema) {
  EXPECT_THAT(MissingFields(Dial()), ElementsAre("platformtype", "serial", "address", "clir"));
  GetCurrentCallsResponse calls;
  calls.add_calls();
  EXPECT_EQ(MissingFields(calls)[3], "calls[0].state");
}

}  // namespace
}  // namespace virtual_modem
