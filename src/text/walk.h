// A walk over the encoded form of a message, with the rules and limits of the runtime's own parser
// (3.21). Printing, masking and examining messages are handlers of it.
//
// Time is linear in the bytes; nothing is allocated. Any bytes may be walked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/tables.h"

namespace virtual_modem::text {

// The limits of the runtime.
inline constexpr int kMaxDepth = 100;  // messages and groups below the outermost message
inline constexpr int kMaxTagBytes = 5;
inline constexpr int kMaxLengthBytes = 5;
inline constexpr int kMaxVarintBytes = 10;
inline constexpr std::uint64_t kMaxLength = 0x7FFFFFFF - 16;

enum WireType : std::uint8_t {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

// Texts are put together with append() alone, and numbers without <string>'s help: each other
// function of strings costs the library on a device an import with a name of a hundred bytes.
inline void Append(std::string& to, std::string_view text) { to.append(text.data(), text.size()); }
void Append(std::string& to, std::uint64_t number);
template <typename First, typename Second, typename... Rest>
[[gnu::always_inline]] inline void Append(std::string& to, const First& first, const Second& second,
                                          const Rest&... rest) {
  Append(to, first);
  Append(to, second);
  (Append(to, rest), ...);
}
inline constexpr std::size_t kMaxDigits = 20;  // of a number of 64 bits, its sign included
// Returns where the digits end.
char* WriteNumber(std::uint64_t number, char* to);

// Whether a byte of a varint is not its last.
inline bool Continues(char byte) { return static_cast<signed char>(byte) < 0; }
// Where the varint ends, or end if it is cut.
template <typename Char>
Char* AfterVarint(Char* at, const char* end) {
  while (at != end && Continues(*at)) ++at;
  return at == end ? at : at + 1;
}
std::uint64_t NumberIn(const char* varint, const char* end);

// A message that is being walked, and the way up from it; the outermost has neither above nor
// field.
struct Level {
  const Level* above;
  const Field* field;  // whose value the message is
  int index;           // place in a list of messages, -1 in a singular field
};

// Such as "calls[0]", empty for the outermost message.
std::string PathTo(const Tables& tables, const Level& level);
// Such as "calls[0].number" for a field of the message at level.
std::string PathTo(const Tables& tables, const Level& level, const Field& field);

// Why a walk ended before the bytes did.
enum class Fault : std::uint8_t {
  kNone,
  kEndsEarly,       // detail: bytes that the innermost message lacks
  kEndsInside,      // an item, that is a tag, length, varint or group, is cut by the input's end
  kOverruns,        // an item is cut by the end of the message around it
  kItemTooLong,     // detail: bytes that the item may take
  kLengthTooLarge,  // a length over 2 GiB
  kShortInput,      // detail: bytes announced, left: bytes there
  kShortMessage,    // the same, before the end of the message around
  kEndGroup,        // a group ends that was not begun
  kOtherGroup,      // another group ends than was begun
  kNoWireType,      // detail: the number
  kTooDeep,
  kFieldZero,
};

// What a walk found.
struct Outcome {
  Fault fault = Fault::kNone;
  const char* item = "";   // for kEndsInside, kOverruns and kItemTooLong
  std::size_t offset = 0;  // of the fault, in bytes from the first one
  std::uint64_t detail = 0;
  std::uint64_t left = 0;
  // What breaks: from the beginning of its field, or of its number in a packed list, up to where
  // reading ended. Handlers saw nothing after its beginning.
  std::size_t broken_from = 0;
  std::size_t broken_to = 0;

  std::uint32_t unknown = 0;     // numbers that a message does not declare
  std::uint32_t undeclared = 0;  // numbers that an enumeration does not declare
  std::uint32_t wrong_type = 0;  // declared fields with a wire type not their own
  // Required fields that are absent, in whatever order the others stand.
  std::uint32_t missing = 0;
  // Fields stand in the order of their numbers, each singular one once and unknown ones last, as
  // serializers write them: what is printed in the order of the bytes is what a parsed message
  // prints.
  bool canonical = true;

  bool malformed() const { return fault != Fault::kNone; }
  // A receiver takes the message: it parses and has every required field.
  bool acceptable() const { return !malformed() && missing == 0; }
  // The bytes may be of another type altogether.
  bool doubtful() const { return !acceptable() || wrong_type != 0; }
  // Some of them belong to no field of the type.
  bool misfit() const { return doubtful() || unknown != 0 || undeclared != 0; }
};

// Such as "malformed at byte 9 in calls[0]: the input ends 3 bytes early", of what Malformed() of a
// handler is told.
std::string Explain(const Tables& tables, const Level& level, const Outcome& outcome);

// The required fields that a message lacks at every depth, whatever the order of its fields, each
// singular message merged from all its occurrences, as a parser does. Adds the paths of the first
// ones in the order of the schema, unless paths is null; returns how many there are.
std::uint32_t FindMissing(const Tables& tables, unsigned message, std::string_view bytes,
                          std::vector<std::string>* paths, std::size_t most_paths = SIZE_MAX);
// Puts the number of them into the outcome of a walk.
void CountAgain(const Tables& tables, unsigned message, std::string_view bytes, Outcome& outcome);

// Called for what the walk finds, in the order of the bytes. Derive from it and hide what matters.
struct Handler {
  // Where the reader stands when Number, Begin, End, BeginPacked or EndPacked is called next: after
  // the number, or at the beginning or end of the message or list.
  void Reached(const char* /*place*/) {}
  // A number, or an element of a list of numbers, packed or not.
  void Number(const Level&, const Field&, std::uint64_t /*value*/) {}
  void Enum(const Level&, const Field&, std::uint64_t /*value*/, std::string_view /*name*/) {}
  void String(const Level&, const Field&, std::string_view /*bytes*/) {}  // of kBytes, too
  // A message begins; what is returned is given to End, which follows whatever happens.
  std::size_t Begin(const Level&, const Field&) { return 0; }
  void End(const Level&, const Field&, std::size_t) {}
  // The same for a packed list, whose numbers are told in between.
  std::size_t BeginPacked() { return 0; }
  void EndPacked(std::size_t) {}
  // A number that its enumeration does not declare: the field stays absent. whole is the field, its
  // tag included, or the element of a packed list.
  void Undeclared(const Level&, const Field&, std::uint64_t /*value*/, std::string_view /*whole*/) {
  }
  // Another field that the message does not keep as its own. whole is all of it, its tag included;
  // value is what stands after the tag and, for kLengthDelimited, after the length; a group's
  // includes its end. field is null when the number is not declared.
  void Unknown(const Level&, const Field* /*field*/, std::uint32_t /*number*/, WireType,
               std::string_view /*whole*/, std::string_view /*value*/) {}
  // The bytes break in the field or message at level; called once.
  void Malformed(const Level&, const Outcome&) {}
};

// Reads the pieces of the encoding of the message in hand. A read that fails leaves the fault in
// outcome.
class Reader {
 public:
  Reader(std::string_view bytes, Outcome& outcome)
      : begin_(bytes.data()),
        input_end_(begin_ + bytes.size()),
        at_(begin_),
        limit_(input_end_),
        size_(bytes.size()),
        outcome_(outcome) {}

  const char* at() const { return at_; }
  std::size_t OffsetOf(const char* place) const { return static_cast<std::size_t>(place - begin_); }
  std::size_t offset() const { return OffsetOf(at_); }

  // The message in hand ends size bytes from here, perhaps after the last byte: its length may
  // promise more bytes than there are. Returns the size of the message around, for Leave.
  std::size_t Enter(std::size_t size) {
    const std::size_t around = size_;
    Leave(offset() + size);
    return around;
  }
  void Leave(std::size_t around) {
    size_ = around;
    limit_ = size_ < OffsetOf(input_end_) ? begin_ + size_ : input_end_;
  }
  // No byte of the message is left.
  bool AtEnd() const { return at_ == limit_; }
  // Bytes that were promised and are not there.
  std::size_t Lacking() const {
    const std::size_t input = OffsetOf(input_end_);
    return size_ > input ? size_ - input : 0;
  }
  // The message in hand reaches to the end of the input, or beyond.
  bool IsLast() const { return limit_ == input_end_; }
  std::size_t Left() const { return static_cast<std::size_t>(limit_ - at_); }

  bool Fail(Fault fault, const char* where, std::uint64_t detail = 0, std::uint64_t left = 0,
            const char* item = "");

  bool ReadVarint(int max_bytes, const char* item, std::uint64_t& value) {
    if (at_ != limit_ && static_cast<signed char>(*at_) >= 0) {
      value = static_cast<std::uint8_t>(*at_++);
      return true;
    }
    return ReadLongVarint(max_bytes, item, value);
  }
  bool ReadLength(std::size_t& size) {
    const char* start = at_;
    std::uint64_t value = 0;
    if (!ReadVarint(kMaxLengthBytes, "length", value)) return false;
    size = static_cast<std::size_t>(value);
    return value <= kMaxLength || Fail(Fault::kLengthTooLarge, start);
  }
  bool SkipBytes(std::size_t size) {
    if (size > Left()) return FailShort(size);
    at_ += size;
    return true;
  }
  // Skips the value of a field whose tag was read; start is where the tag is.
  bool Skip(std::uint32_t number, unsigned wire_type, const char* start, int& depth);

 private:
  bool ReadLongVarint(int max_bytes, const char* item, std::uint64_t& value);
  bool FailShort(std::size_t size);
  bool SkipGroup(std::uint32_t number, const char* start, int& depth);

  const char* begin_;
  const char* input_end_;
  const char* at_;
  const char* limit_;  // where the message in hand ends, or the input if it is first
  std::size_t size_;   // where the message in hand should end
  Outcome& outcome_;
};

template <typename H>
class Walk {
 public:
  Walk(const Tables& tables, std::string_view bytes, H& handler)
      : tables_(tables), bytes_(bytes), reader_(bytes, outcome_), handler_(handler) {}

  Outcome Run(unsigned message) {
    const Level outermost{nullptr, nullptr, -1};
    ReadMessage(message, outermost);
    // Counted on the way, which is right unless an absent field came later or merged.
    if (outcome_.missing != 0 && !outcome_.canonical) {
      CountAgain(tables_, message, bytes_, outcome_);
    }
    return outcome_;
  }

 private:
  // What is known of the message in hand while it is read.
  struct State {
    const Message& row;
    const Level& level;
    const char* start = nullptr;   // of the field, or number of a packed list, in hand
    const Field* field = nullptr;  // in hand, when it is declared
    std::uint32_t number = 0;      // its number
    std::uint32_t last = 0;        // highest number that was kept
    int count = 0;                 // elements so far of the list of messages of that number
    bool unknown = false;          // something was not kept
  };

  bool ReadMessage(unsigned message, const Level& level) {
    State state{tables_.messages[message], level};
    const bool read = ReadFields(state);
    if (!read && !told_) {
      told_ = true;
      outcome_.broken_from = reader_.OffsetOf(state.start);
      outcome_.broken_to = reader_.offset();
      const Field* field = state.field;
      const bool element =
          field != nullptr && field->repeated && field->kind == FieldKind::kMessage;
      const Level at{&level, field, element ? state.count : -1};
      handler_.Malformed(field == nullptr ? level : at, outcome_);
    }
    CountMissing(state, UINT32_MAX);
    return read;
  }

  bool ReadFields(State& state) {
    while (!reader_.AtEnd()) {
      state.field = nullptr;
      state.start = reader_.at();
      std::uint64_t tag = 0;
      if (!reader_.ReadVarint(kMaxTagBytes, "tag", tag)) return false;
      const std::uint32_t number = static_cast<std::uint32_t>(tag) >> 3U;
      const auto wire_type = static_cast<unsigned>(tag & 7U);
      if (number == 0) return reader_.Fail(Fault::kFieldZero, state.start);
      const Field* field = tables_.Find(state.row, number);
      state.field = field;
      state.number = number;
      if (field == nullptr) {
        ++outcome_.unknown;
        if (!ReadUnknown(state, wire_type)) return false;
      } else if (field->kind == FieldKind::kMessage && wire_type == kLengthDelimited) {
        Keep(state);
        if (!ReadBelow(state)) return false;
      } else if (!ReadField(state, wire_type)) {
        return false;
      }
    }
    state.field = nullptr;
    state.start = reader_.at();
    const std::size_t lacking = reader_.Lacking();
    return lacking == 0 || reader_.Fail(Fault::kEndsEarly, reader_.at(), lacking);
  }

  void Keep(State& state) {
    const std::uint32_t number = state.number;
    if (state.unknown) outcome_.canonical = false;
    if (number > state.last) {
      if (number > state.last + 1) CountMissing(state, number);
      state.last = number;
      state.count = 0;
    } else if (number < state.last || !state.field->repeated) {
      outcome_.canonical = false;
    }
  }

  // Of the numbers between the last one kept and to.
  void CountMissing(const State& state, std::uint32_t to) {
    // Up to the last dense number, rows stand at the places of their numbers.
    const std::uint32_t dense = state.row.last_dense;
    const Field* field = tables_.Begin(state.row) + (state.last < dense ? state.last : dense);
    const Field* end = to <= dense ? tables_.Begin(state.row) + to - 1 : tables_.End(state.row);
    for (; field < end; ++field) {
      if (!field->required) continue;
      const std::uint32_t number = tables_.NumberOf(*field);
      if (number > state.last && number < to) ++outcome_.missing;
    }
  }

  std::string_view From(const char* place) const {
    return {place, static_cast<std::size_t>(reader_.at() - place)};
  }

  bool ReadUnknown(State& state, unsigned wire_type) {
    const char* value = reader_.at();
    if (!reader_.Skip(state.number, wire_type, state.start, depth_)) return false;
    if (wire_type == kLengthDelimited) value = AfterVarint(value, reader_.at());
    state.unknown = true;
    handler_.Unknown(state.level, state.field, state.number, static_cast<WireType>(wire_type),
                     From(state.start), From(value));
    return true;
  }

  // A declared field that is not a message, or is not sent as one.
  bool ReadField(State& state, unsigned wire_type) {
    const Field& field = *state.field;
    if (field.kind < FieldKind::kString) {
      if (wire_type == kVarint) return ReadNumber(state);
      if (wire_type == kLengthDelimited && field.repeated) return ReadPacked(state);
    } else if (field.kind != FieldKind::kMessage && wire_type == kLengthDelimited) {
      std::size_t size = 0;
      if (!reader_.ReadLength(size)) return false;
      const char* value = reader_.at();
      if (!reader_.SkipBytes(size)) return false;
      handler_.String(state.level, field, {value, size});
      Keep(state);
      return true;
    }
    ++outcome_.wrong_type;
    return ReadUnknown(state, wire_type);
  }

  bool ReadNumber(State& state) {
    const Field& field = *state.field;
    std::uint64_t value = 0;
    if (!reader_.ReadVarint(kMaxVarintBytes, "varint", value)) return false;
    if (field.kind != FieldKind::kEnum) {
      handler_.Reached(reader_.at());
      handler_.Number(state.level, field, value);
      Keep(state);
      return true;
    }
    const std::string_view name =
        tables_.enum_name(tables_.context, field.below, static_cast<std::int32_t>(value));
    if (name.empty()) {
      ++outcome_.undeclared;
      state.unknown = true;  // the field itself is still absent
      handler_.Undeclared(state.level, field, value, From(state.start));
    } else {
      handler_.Enum(state.level, field, value, name);
      Keep(state);
    }
    return true;
  }

  // Repeated numbers in one length-delimited field, all of them elements of the same list.
  bool ReadPacked(State& state) {
    std::size_t size = 0;
    if (!reader_.ReadLength(size)) return false;
    if (size > reader_.Left()) return reader_.SkipBytes(size);
    const std::size_t around = reader_.Enter(size);
    handler_.Reached(reader_.at());
    const std::size_t mark = handler_.BeginPacked();
    bool read = true;
    while (read && !reader_.AtEnd()) {
      state.start = reader_.at();
      read = ReadNumber(state);
    }
    handler_.Reached(reader_.at());
    handler_.EndPacked(mark);
    reader_.Leave(around);
    return read;
  }

  bool ReadBelow(State& state) {
    const Field& field = *state.field;
    std::size_t size = 0;
    if (!reader_.ReadLength(size)) return false;
    if (++depth_ > kMaxDepth) return reader_.Fail(Fault::kTooDeep, state.start);
    // Where the input was cut, the fields that are left of the message are still worth reading.
    if (size > reader_.Left() && !reader_.IsLast()) return reader_.SkipBytes(size);
    const std::size_t around = reader_.Enter(size);
    const Level below{&state.level, &field, field.repeated ? state.count++ : -1};
    handler_.Reached(reader_.at());
    const std::size_t mark = handler_.Begin(below, field);
    const bool read = ReadMessage(field.below, below);
    handler_.Reached(reader_.at());
    handler_.End(below, field, mark);
    reader_.Leave(around);
    --depth_;
    return read;
  }

  const Tables& tables_;
  const std::string_view bytes_;
  Outcome outcome_;
  Reader reader_;
  H& handler_;
  int depth_ = 0;
  bool told_ = false;
};

// Walks bytes as a message, which is an index into tables.messages.
template <typename H>
Outcome WalkMessage(const Tables& tables, unsigned message, std::string_view bytes, H& handler) {
  return Walk<H>(tables, bytes, handler).Run(message);
}

}  // namespace virtual_modem::text
