#include "text/walk.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace virtual_modem::text {

const SparseNumber* Tables::FirstSparse(std::ptrdiff_t row) const {
  return std::lower_bound(
      sparse, sparse_end, row,
      [](const SparseNumber& one, std::ptrdiff_t wanted) { return one.row < wanted; });
}

const Field* Tables::FindSparse(const Message& row, std::uint32_t number) const {
  const SparseNumber* end = FirstSparse((&row)[1].first_field);
  const SparseNumber* found = std::lower_bound(
      FirstSparse(row.first_field), end, number,
      [](const SparseNumber& one, std::uint32_t wanted) { return one.number < wanted; });
  return found != end && found->number == number ? &fields[found->row] : nullptr;
}

char* WriteNumber(std::uint64_t number, char* to) {
  if (number < 10) {
    *to = static_cast<char>('0' + number);
    return to + 1;
  }
  return std::to_chars(to, to + kMaxDigits, number).ptr;
}

void Append(std::string& to, std::uint64_t number) {
  char digits[kMaxDigits];
  to.append(digits, static_cast<std::size_t>(WriteNumber(number, digits) - digits));
}

std::uint64_t NumberIn(const char* at, const char* end) {
  std::uint64_t value = 0;
  while (end != at) value = value << 7U | (static_cast<std::uint8_t>(*--end) & 0x7FU);
  return value;
}

std::string PathTo(const Tables& tables, const Level& level) {
  if (level.field == nullptr) return {};
  std::string path = PathTo(tables, *level.above, *level.field);
  if (level.index >= 0) Append(path, "[", static_cast<std::uint64_t>(level.index), "]");
  return path;
}

std::string PathTo(const Tables& tables, const Level& level, const Field& field) {
  std::string path = PathTo(tables, level);
  Append(path, path.empty() ? "" : ".", tables.NameOf(field));
  return path;
}

std::string Explain(const Tables& tables, const Level& level, const Outcome& outcome) {
  // By fault; # stands for the detail, @ for the item, $ for what is left.
  static constexpr const char* kReasons[] = {
      "",
      "the input ends # bytes early",
      "the input ends inside a @",
      "a @ runs past the end of the message around it",
      "a @ is longer than # bytes",
      "a length is over 2 GiB",
      "# bytes announced, $ left before the end of the input",
      "# bytes announced, $ left before the end of the message around",
      "a group ends that was not begun",
      "another group ends than was begun",
      "there is no wire type #",
      "more than 100 levels of nesting",
      "a field has number 0",
  };
  static_assert(std::size(kReasons) == static_cast<std::size_t>(Fault::kFieldZero) + 1);
  static_assert(kMaxDepth == 100);
  const std::string path = PathTo(tables, level);
  std::string text;
  Append(text, "malformed at byte ", outcome.offset, path.empty() ? "" : " in ", path, ": ");
  for (const char c : std::string_view(kReasons[static_cast<std::size_t>(outcome.fault)])) {
    if (c == '#') {
      Append(text, outcome.detail);
    } else if (c == '$') {
      Append(text, outcome.left);
    } else if (c == '@') {
      Append(text, outcome.item);
    } else {
      text.append(1, c);
    }
  }
  return text;
}

bool Reader::Fail(Fault fault, const char* where, std::uint64_t detail, std::uint64_t left,
                  const char* item) {
  outcome_.fault = fault;
  outcome_.offset = OffsetOf(where);
  outcome_.detail = detail;
  outcome_.left = left;
  outcome_.item = item;
  return false;
}

bool Reader::ReadLongVarint(int max_bytes, const char* item, std::uint64_t& value) {
  value = 0;
  const char* start = at_;
  for (int i = 0; i < max_bytes; ++i) {
    if (at_ == limit_) {
      return Fail(IsLast() ? Fault::kEndsInside : Fault::kOverruns, at_, 0, 0, item);
    }
    const auto byte = static_cast<std::uint8_t>(*at_++);
    value |= static_cast<std::uint64_t>(byte & 0x7FU) << (7U * static_cast<unsigned>(i));
    if (byte < 0x80) return true;
  }
  return Fail(Fault::kItemTooLong, start, static_cast<std::uint64_t>(max_bytes), 0, item);
}

bool Reader::FailShort(std::size_t size) {
  return Fail(IsLast() ? Fault::kShortInput : Fault::kShortMessage, at_, size, Left());
}

bool Reader::Skip(std::uint32_t number, unsigned wire_type, const char* start, int& depth) {
  std::uint64_t value = 0;
  std::size_t size = 0;
  switch (wire_type) {
    case kVarint:
      return ReadVarint(kMaxVarintBytes, "varint", value);
    case kFixed64:
      return SkipBytes(8);
    case kLengthDelimited:
      return ReadLength(size) && SkipBytes(size);
    case kStartGroup:
      return SkipGroup(number, start, depth);
    case kEndGroup:
      return Fail(Fault::kEndGroup, start);
    case kFixed32:
      return SkipBytes(4);
    default:
      return Fail(Fault::kNoWireType, start, wire_type);
  }
}

bool Reader::SkipGroup(std::uint32_t number, const char* start, int& depth) {
  if (++depth > kMaxDepth) return Fail(Fault::kTooDeep, start);
  for (;;) {
    const char* inner = at_;
    std::uint64_t tag = 0;
    if (!ReadVarint(kMaxTagBytes, "group", tag)) return false;
    const std::uint32_t inner_number = static_cast<std::uint32_t>(tag) >> 3U;
    if (inner_number == 0) return Fail(Fault::kFieldZero, inner);
    const auto wire_type = static_cast<unsigned>(tag & 7U);
    if (wire_type == kEndGroup) {
      if (inner_number != number) return Fail(Fault::kOtherGroup, inner);
      --depth;
      return true;
    }
    if (!Skip(inner_number, wire_type, inner, depth)) return false;
  }
}

namespace {

// A message whose fields are looked for: what bytes lead to by the singular fields from first up to
// before last, each of which may occur several times.
struct Place {
  std::string_view bytes;
  const Field** first;
  const Field** last;
  const Level& level;
};

class MissingFinder {
 public:
  MissingFinder(const Tables& tables, std::vector<std::string>* paths, std::size_t most_paths)
      : tables_(tables), paths_(paths), most_paths_(most_paths) {}

  std::uint32_t Run(std::string_view bytes, unsigned message) {
    const Level outermost{nullptr, nullptr, -1};
    Examine({bytes, way_, way_, outermost}, message);
    return found_;
  }

 private:
  void Examine(const Place& place, unsigned message) {
    if (place.last > way_ + kMaxDepth) return;
    const Message& row = tables_.messages[message];
    for (const Field* field = tables_.Begin(row); field != tables_.End(row); ++field) {
      if (!field->required && field->kind != FieldKind::kMessage) continue;
      *place.last = field;
      int count = 0;
      if (Occurs(place, count)) {
        if (field->kind != FieldKind::kMessage || field->repeated) continue;
        const Level below{&place.level, field, -1};
        Examine({place.bytes, place.first, place.last + 1, below}, field->below);
      } else if (field->required) {
        ++found_;
        if (paths_ != nullptr && found_ <= most_paths_) {
          paths_->push_back(PathTo(tables_, place.level, *field));
        }
      }
    }
  }

  // Whether the field at last is there. Examines the elements of a list of messages, of which count
  // were seen before.
  bool Occurs(const Place& place, int& count) {
    const Field& field = **place.first;
    const std::uint32_t wanted =
        tables_.NumberOf(field) << 3U |
        static_cast<std::uint32_t>(field.kind < FieldKind::kString ? kVarint : kLengthDelimited);
    Outcome unused;
    Reader reader(place.bytes, unused);
    bool occurs = false;
    bool whole = true;
    while (whole && !reader.AtEnd()) {
      const char* start = reader.at();
      std::uint64_t tag = 0;
      if (!reader.ReadVarint(kMaxTagBytes, "", tag)) break;
      const char* value = reader.at();
      int depth = 0;
      whole = reader.Skip(static_cast<std::uint32_t>(tag) >> 3U, static_cast<unsigned>(tag & 7U),
                          start, depth);
      if (static_cast<std::uint32_t>(tag) != wanted) continue;
      const char* end = reader.at();
      if (field.kind != FieldKind::kMessage) {
        occurs =
            occurs ||
            (whole && (field.kind != FieldKind::kEnum || IsDeclared(field, NumberIn(value, end))));
        continue;
      }
      // Of a message that does not end here, the beginning counts.
      if (!whole) end = place.bytes.data() + place.bytes.size();
      value = AfterVarint(value, end);
      const std::string_view below(value, static_cast<std::size_t>(end - value));
      if (place.first != place.last) {
        occurs = Occurs({below, place.first + 1, place.last, place.level}, count) || occurs;
        continue;
      }
      occurs = true;
      if (!field.repeated) continue;
      const Level element{&place.level, &field, count++};
      Examine({below, place.last + 1, place.last + 1, element}, field.below);
    }
    return occurs;
  }

  bool IsDeclared(const Field& field, std::uint64_t number) const {
    return !tables_.enum_name(tables_.context, field.below, static_cast<std::int32_t>(number))
                .empty();
  }

  const Tables& tables_;
  std::vector<std::string>* paths_;
  const std::size_t most_paths_;
  std::uint32_t found_ = 0;
  const Field* way_[kMaxDepth + 1];  // down from the outermost message
};

}  // namespace

std::uint32_t FindMissing(const Tables& tables, unsigned message, std::string_view bytes,
                          std::vector<std::string>* paths, std::size_t most_paths) {
  return MissingFinder(tables, paths, most_paths).Run(bytes, message);
}

void CountAgain(const Tables& tables, unsigned message, std::string_view bytes, Outcome& outcome) {
  // What breaks, and all after it, is not there.
  const std::size_t size = outcome.malformed() ? outcome.broken_from : bytes.size();
  outcome.missing = FindMissing(tables, message, {bytes.data(), size}, nullptr);
}

}  // namespace virtual_modem::text
