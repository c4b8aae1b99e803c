#include <virtual_modem/testing.h>
#include <virtual_modem/types.h>

#include "text/generated.h"
#include "text/walk.h"

namespace virtual_modem {
namespace {

using google::protobuf::MessageLite;
using text::kTables;
using text::Level;

// The next field of an encoded message, as serializers write it: declared fields in the order of
// their numbers, then unknown ones.
struct Side {
  static constexpr std::uint32_t kUnknown = 1U << 29U;  // behind all declared numbers
  static constexpr std::uint32_t kNone = kUnknown + 1;

  explicit Side(std::string_view bytes) : reader(bytes, outcome) {}

  void Next(const text::Message& row) {
    order = kNone;
    if (reader.AtEnd()) return;
    const char* start = reader.at();
    std::uint64_t tag = 0;
    int depth = 0;
    std::size_t size = 0;
    const bool read = reader.ReadVarint(text::kMaxTagBytes, "", tag);
    number = static_cast<std::uint32_t>(tag) >> 3U;
    field = kTables.Find(row, number);
    order = field != nullptr ? number : kUnknown;
    const char* value = reader.at();
    // Half an unknown field, from a parse that failed, is the rest of the bytes.
    if (!read || !reader.Skip(number, tag & 7U, start, depth)) reader.SkipBytes(reader.Left());
    whole = {start, static_cast<std::size_t>(reader.at() - start)};
    if (field == nullptr || field->kind != text::FieldKind::kMessage) return;
    const char* end = reader.at();
    reader.MoveTo(value);
    reader.ReadLength(size);
    message = {reader.at(), size};
    reader.MoveTo(end);
  }

  text::Outcome outcome;
  text::Reader reader;
  std::uint32_t order = kNone;
  std::uint32_t number = 0;
  const text::Field* field = nullptr;
  std::string_view whole;
  std::string_view message;  // of a field that holds one
};

// Appends where the messages at level differ first.
void AppendDifference(std::string_view first, std::string_view second, unsigned message,
                      const Level& level, std::string& to) {
  const text::Message& row = kTables.messages[message];
  Side sides[] = {Side(first), Side(second)};
  std::uint32_t last = 0;
  int index = 0;
  for (;;) {
    for (Side& side : sides) side.Next(row);
    const bool second_only = sides[1].order < sides[0].order;
    const Side& side = sides[second_only ? 1 : 0];
    if (side.order == Side::kNone) return;
    index = side.number == last ? index + 1 : 0;
    last = side.number;
    if (sides[0].whole == sides[1].whole && sides[0].order == sides[1].order) continue;

    const Level at{&level, side.field, side.field != nullptr && side.field->repeated ? index : -1};
    const bool both = sides[0].order == sides[1].order;
    if (both && side.field != nullptr && side.field->kind == text::FieldKind::kMessage) {
      return AppendDifference(sides[0].message, sides[1].message, side.field->below, at, to);
    }
    text::Append(to, PathTo(kTables, side.field != nullptr ? at : level));
    if (side.field == nullptr) {
      if (!to.empty()) text::Append(to, ".");
      text::AppendNumber(to, side.number);
    }
    if (!both) text::Append(to, second_only ? " (only in the second)" : " (only in the first)");
    return;
  }
}

}  // namespace

std::string FirstDifference(const MessageLite& first, const MessageLite& second) {
  const Type& type = TypeOf(first);
  const Type& other = TypeOf(second);
  std::string difference;
  if (type.prototype == nullptr || other.prototype == nullptr) {
    text::Append(difference, "a message of another library");
  } else if (&type != &other) {
    text::Append(difference, type.name);
    text::Append(difference, " and ");
    text::Append(difference, other.name);
  } else {
    AppendDifference(first.SerializePartialAsString(), second.SerializePartialAsString(),
                     static_cast<unsigned>(&type - Types().begin()), {nullptr, nullptr, -1},
                     difference);
  }
  return difference;
}

}  // namespace virtual_modem
