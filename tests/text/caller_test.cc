// What callers do with messages in their code and in their tests.
#include <gmock/gmock.h>
#include <virtual_modem/testing.h>
#include <virtual_modem/types.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using google::protobuf::MessageLite;
using ::testing::HasSubstr;
using virtual_modem::As;
using virtual_modem::FirstDifference;
using virtual_modem::Parse;
using virtual_modem::Visit;

template <typename... F>
struct Overloaded : F... {
  using F::operator()...;
};
template <typename... F>
Overloaded(F...) -> Overloaded<F...>;

Dial MakeDial() {
  Dial dial;
  dial.set_platformtype(QCOM);
  dial.set_serial(7);
  dial.set_address("112");
  dial.set_clir(CLIR_DEFAULT);
  return dial;
}

TEST(As, IsTheClassOrNull) {
  Dial dial = MakeDial();
  MessageLite& message = dial;
  EXPECT_EQ(As<Hangup>(message), nullptr);
  As<Dial>(message)->set_serial(8);
  const MessageLite& constant = message;
  static_assert(std::is_same_v<decltype(As<Dial>(constant)), const Dial*>);
  EXPECT_EQ(As<Dial>(constant)->serial(), 8);
  EXPECT_EQ(&virtual_modem::TypeOf<Dial>(), virtual_modem::FindType("Dial"));
}

TEST(Parse, TellsAnUnknownTypeFromBrokenBytesWithoutAWord) {
  ::testing::internal::CaptureStderr();
  const auto dial = Parse("Dial", "\x10\x07");  // lacks required fields
  EXPECT_TRUE(dial);
  EXPECT_EQ(dial.type->name, std::string("Dial"));
  EXPECT_EQ(As<Dial>(*dial.message)->serial(), 7);
  const auto broken = Parse("Dial", "\x10\x07\x1a\x05+");
  EXPECT_FALSE(broken);
  EXPECT_EQ(broken.type, dial.type);
  EXPECT_EQ(As<Dial>(*broken.message)->serial(), 7);
  const auto unknown = Parse("Dia", "");
  EXPECT_FALSE(unknown);
  EXPECT_EQ(unknown.type, nullptr);
  EXPECT_EQ(unknown.message, nullptr);
  if constexpr (sizeof(std::size_t) > 4) {  // never looked at
    const std::string_view large("", (std::size_t{1} << 31U) + 4);
    EXPECT_FALSE(Parse("Dial", large));
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(Visit, CallsTheOverloadThatFitsBest) {
  Dial dial = MakeDial();
  const Hangup hangup;
  MessageLite& message = dial;
  const MessageLite& constant = message;
  const auto number = Overloaded{[](const Dial& m) { return m.serial(); },
                                 [](const Hangup& /*message*/) { return -1; }};
  EXPECT_EQ(Visit(constant, number), 7);
  EXPECT_EQ(Visit(hangup, number), -1);
  EXPECT_EQ(Visit(RadioCallRing(), number), std::nullopt);

  const auto with_rest = Overloaded{[](const Dial& /*message*/) { return std::string("dial"); },
                                    [](const MessageLite& m) { return m.GetTypeName(); }};
  EXPECT_EQ(Visit(constant, with_rest), "dial");
  EXPECT_EQ(Visit(message, with_rest), "dial");
  EXPECT_EQ(Visit(hangup, with_rest), "Hangup");
  int counted = 0;
  EXPECT_EQ(Visit(hangup, [&](const MessageLite& /*message*/) mutable { return ++counted; }), 1);

  EXPECT_TRUE(Visit(message, [](Dial& m) { m.set_serial(9); }));
  EXPECT_EQ(dial.serial(), 9);
  EXPECT_FALSE(Visit(constant, Overloaded{[](Dial& /*message*/) { FAIL(); },
                                          [](const Hangup& /*message*/) { FAIL(); }}));
  // Without one result, it is whether there was a call.
  const bool called = Visit(hangup, Overloaded{[](const Dial& /*message*/) { return 1; },
                                               [](const auto& /*message*/) {}});
  EXPECT_TRUE(called);
}

TEST(FirstDifference, NamesItsPath) {
  GetCurrentCallsResponse left;
  left.set_serial(1);
  left.add_calls()->set_index(1);
  left.add_calls()->set_number("110");
  GetCurrentCallsResponse right = left;
  EXPECT_EQ(FirstDifference(left, right), "");
  EXPECT_EQ(left, right);

  const auto differ = [&](const char* path, auto change) {
    GetCurrentCallsResponse changed = left;
    change(changed);
    EXPECT_EQ(FirstDifference(left, changed), path);
    EXPECT_NE(left, changed);
  };
  differ("serial", [](auto& m) { m.set_serial(2); });
  differ("serial (only in the first)", [](auto& m) { m.clear_serial(); });
  differ("platformtype (only in the second)", [](auto& m) { m.set_platformtype(QCOM); });
  differ("calls[1].number", [](auto& m) { m.mutable_calls(1)->set_number("1102"); });
  differ("calls[0].state (only in the second)",
         [](auto& m) { m.mutable_calls(0)->set_state(RADIO_CALL_ACTIVE); });
  differ("calls[2] (only in the second)", [](auto& m) { m.add_calls(); });
  differ("calls[0].99 (only in the second)",
         [](auto& m) { *m.mutable_calls(0)->mutable_unknown_fields() = "\x98\x06\x01"; });
  // Half of a field, as a parse that failed leaves it.
  differ("an unknown field (only in the second)",
         [](auto& m) { *m.mutable_unknown_fields() = "\x63\x08"; });
  differ("calls[1] (only in the first)", [](auto& m) { m.mutable_calls()->RemoveLast(); });
  *left.mutable_unknown_fields() = "\x60\x01\x68\x01";
  differ("13", [](auto& m) { *m.mutable_unknown_fields() = "\x60\x01\x68\x02"; });

  // The same value, in two bytes.
  differ("the encoding of unknown fields",
         [](auto& m) { *m.mutable_unknown_fields() = "\x60\x01\x68\x81" + std::string(1, '\0'); });
  left.clear_calls();
  left.add_calls()->set_number("110");
  differ("calls.number (only in the first)", [](auto& m) { m.mutable_calls(0)->clear_number(); });
  differ("calls[1] (only in the second)", [](auto& m) { m.add_calls(); });

  RepeatUintResultIndication numbers;
  numbers.add_result(5);
  numbers.add_result(5);
  RepeatUintResultIndication others = numbers;
  others.set_result(1, 6);
  EXPECT_EQ(FirstDifference(numbers, others), "result[1]");
  EXPECT_EQ(FirstDifference(Dial(), Hangup()), "Dial and Hangup");
}

TEST(Testing, PrintsMessagesMaskedUnlessAskedOtherwise) {
  std::ostringstream stream;
  stream << MakeDial();
  EXPECT_EQ(stream.str(),
            R"(Dial { platformtype: QCOM serial: 7 address: "XXX" clir: CLIR_DEFAULT })");
  // As failures of tests print them, and in a namespace of their own.
  EXPECT_EQ(::testing::PrintToString(std::vector<Dial>(1)), "{ Dial { } }");
  EXPECT_EQ(::testing::PrintToString(virtualdata::proto::MasterSlaveShareConfirmRsp()),
            "virtualdata.proto.MasterSlaveShareConfirmRsp { }");
  virtual_modem::show_subscriber_data = true;
  EXPECT_THAT(::testing::PrintToString(MakeDial()), HasSubstr("\"112\""));
  virtual_modem::show_subscriber_data = false;
}

}  // namespace
