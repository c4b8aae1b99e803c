// What compare_printers.py cannot see: options, bytes that are no message, types and foreign
// messages.
#include <gmock/gmock.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <thread>
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

TEST(Types, HaveTheKindThatTheSchemaGives) {
  const auto kind = [](const char* name) { return std::string(KindName(FindType(name)->kind)); };
  EXPECT_EQ(kind("Dial"), "request");
  EXPECT_EQ(kind("NoResultResponse"), "response");
  EXPECT_EQ(kind("RadioCallRing"), "indication");
  EXPECT_EQ(kind("Call"), "record");
}

TEST(Types, WithoutSuchANameAreNull) {
  for (const char* name : {"", "dial", "Dia", "Dialx", "SlaveSetupDataCallRequest", "zz", "\xff"}) {
    EXPECT_EQ(FindType(name), nullptr) << name;
  }
  EXPECT_EQ(FindType(std::string_view("Dial\0", 5)), nullptr);
}

TEST(Types, TellTheSerial) {
  EXPECT_EQ(SerialOf(MakeDial()), 7);
  EXPECT_EQ(SerialOf(Dial()), std::nullopt);
  EXPECT_EQ(SerialOf(RadioCallRing()), std::nullopt);
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
  TextOptions options;
  options.show_subscriber_data = true;
  for (const std::size_t digits : {13U, 1000U, 3000U, 5000U, 200'000U}) {
    dial.set_address(std::string(digits, '5'));
    options.max_bytes = 0;
    const std::string whole = ToText(dial, options);
    EXPECT_THAT(whole, EndsWith("clir: CLIR_DEFAULT"));
    for (const std::size_t bound : {whole.size() - 1, std::size_t{60}, std::size_t{4000}}) {
      SCOPED_TRACE(std::to_string(digits) + " digits in " + std::to_string(bound));
      options.max_bytes = bound;
      const std::string text = ToText(dial, options);
      if (whole.size() <= bound) {
        EXPECT_EQ(text, whole);
        continue;
      }
      EXPECT_LE(text.size(), bound);
      EXPECT_GE(text.size() + 8, bound);  // the mark counts with fewer digits than were feared
      const std::size_t kept = text.find(" [... ");
      EXPECT_EQ(text.substr(0, kept), whole.substr(0, kept));
      EXPECT_EQ(text.substr(kept), " [... " + std::to_string(whole.size() - kept) + " more bytes]");
    }
    options.max_bytes = whole.size();
    EXPECT_EQ(ToText(dial, options), whole);
  }
  options.max_bytes = 1;
  EXPECT_EQ(ToText(MakeDial(), options), " [... 71 more bytes]");
}

TEST(Text, LeavesOutUnknownFieldsButCountsThem) {
  Dial dial = MakeDial();
  *dial.mutable_unknown_fields() = "\x52\x04+491";  // field 10
  EXPECT_THAT(ToText(dial), EndsWith("CLIR_DEFAULT # unknown fields 10 (6 bytes)"));
  EXPECT_THAT(ToText(dial, {true}), EndsWith("CLIR_DEFAULT 10: \"+491\""));
  EXPECT_THAT(ToText(dial, {false, false}), EndsWith("\n# unknown fields 10 (6 bytes)\n"));
  EXPECT_EQ(MaskedBytes(dial).find("+491"), std::string::npos);
}

TEST(Text, OfBytesSaysWhereTheyBreak) {
  GetCurrentCallsResponse calls;
  calls.set_platformtype(QCOM);
  calls.set_serial(1);
  calls.set_error(RADIO_E_SUCCESS);
  calls.add_calls()->set_index(1);
  calls.add_calls()->set_number("+861012345678");
  const std::string bytes = calls.SerializePartialAsString();
  EXPECT_EQ(ToText("GetCurrentCallsResponse", bytes, {true}), ToText(calls, {true}));
  EXPECT_EQ(ToText("GetCurrentCallsResponse", bytes.substr(0, bytes.size() - 3), {true}),
            "platformtype: QCOM serial: 1 error: RADIO_E_SUCCESS calls { index: 1 } calls { } "
            "# malformed at byte 14 in calls[1].number: 13 bytes announced, 10 left before the end "
            "of the input");
  EXPECT_EQ(ToText("GetCurrentCallsResponse", "\x08\x02\x16", {true, false}),
            "platformtype: MTK\n"
            "# malformed at byte 2 in serial: there is no wire type 6\n");
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
  // An operator's name is shown where the bytes fit.
  OperatorResponse fits;
  fits.set_platformtype(QCOM);
  fits.set_serial(1);
  fits.set_error(RADIO_E_SUCCESS);
  fits.set_alphalong("Operator");
  fits.set_alphashort("Op");
  fits.set_numeric("00101");
  const std::string fitting = fits.SerializeAsString();
  EXPECT_THAT(ToText("OperatorResponse", fitting), HasSubstr("Operator"));
  // As a number, the name is another type's field.
  EXPECT_THAT(ToText("OperatorResponse", fitting + "\x20\x01"), Not(HasSubstr("Operator")));
}

TEST(Text, OfALongNumberIsMaskedToItsEnd) {
  Dial dial = MakeDial();
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

TEST(Text, OfGroupsAndNestedUnknownBytesIsBounded) {
  Dial dial = MakeDial();
  std::string& unknown = *dial.mutable_unknown_fields();
  for (int i = 0; i < 60; ++i) unknown += "\x53";  // groups of number 10
  for (int i = 0; i < 60; ++i) unknown += "\x54";
  const std::string text = ToText(dial, {true, true, 0});
  EXPECT_EQ(std::count(text.begin(), text.end(), '{'), 60);
  EXPECT_EQ(std::count(text.begin(), text.end(), '}'), 60);
}

TEST(MissingFields, AreNamedInTheOrderOfTheSchema) {
  GetCurrentCallsResponse calls;
  calls.set_platformtype(QCOM);
  calls.add_calls();
  Call& call = *calls.add_calls();
  call.set_state(RADIO_CALL_ACTIVE);
  call.set_index(1);
  for (const char* path : {"serial", "error", "calls[0].state", "calls[1].toa"}) {
    EXPECT_THAT(MissingFields(calls), ::testing::Contains(path));
  }
  const auto missing = MissingFields(calls);
  EXPECT_EQ(missing[0], "serial");
  EXPECT_EQ(missing[2], "calls[0].state");
  EXPECT_EQ(std::count(missing.begin(), missing.end(), "calls[1].state"), 0);
  EXPECT_THAT(MissingFields(MakeDial()), ElementsAre());
  Dial dial;
  EXPECT_THAT(MissingFields(dial), ElementsAre("platformtype", "serial", "address", "clir"));
  *dial.mutable_unknown_fields() = "\x08\x63";  // an undeclared platform type: still absent
  EXPECT_THAT(MissingFields(dial), ElementsAre("platformtype", "serial", "address", "clir"));
}

// First use from several threads at once, and the same text from all (scripts/test tsan).
TEST(Text, IsSafeToMakeFromSeveralThreads) {
  const Dial dial = MakeDial();
  std::vector<std::thread> threads;
  threads.reserve(8);
  std::vector<std::string> texts(8);
  for (std::string& text : texts) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) text = ToText(dial);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), 1U);
}

}  // namespace
}  // namespace virtual_modem
