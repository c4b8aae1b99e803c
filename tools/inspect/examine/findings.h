// What an encoded message holds, or lacks, beyond what its fields show.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/schema/schema.h"
#include "text/walk.h"

namespace virtual_modem::inspect {

class Findings {
 public:
  enum Kind : std::uint8_t {
    kMalformed,   // the bytes break off or cannot be; at most one
    kMissing,     // a required field is absent
    kUndeclared,  // a number that its enumeration does not declare; the field stays absent
    kWireType,    // a declared field with a wire type not its own; kept as an unknown field
    kUnknown,     // a field number that the message does not declare
    kText,        // bytes that are not UTF-8 where the output must be
    kKinds,
  };

  // Every finding is counted; the texts of the first hundred are kept. An empty text only counts.
  void Add(Kind kind, const std::string& text);
  // No further text will be kept, so none need be built.
  bool full() const;

  std::size_t count(Kind kind) const { return counts_.at(kind); }
  bool empty() const;
  // The bytes look like those of another type.
  bool misfit() const {
    return !acceptable() || count(kUndeclared) + count(kWireType) + count(kUnknown) != 0;
  }
  // A receiver takes the message: it parses and has every required field.
  bool acceptable() const { return count(kMalformed) + count(kMissing) == 0; }

  // Bytes that may be another type's altogether.
  bool doubtful() const { return !acceptable() || count(kWireType) != 0; }

  // What to tell of each, up to a hundred.
  const std::vector<std::string>& texts() const { return texts_; }
  // One line each, after "# ", which makes them comments of the text format.
  std::string Lines() const;
  // Such as "malformed, required fields missing: 2".
  std::string Summary() const;

 private:
  std::vector<std::string> texts_;
  std::array<std::size_t, kKinds> counts_{};
};

// There is nothing to tell of bytes with this outcome, and they are as a serializer writes them.
bool IsPlain(const text::Outcome& outcome);

// Parses the bytes into the message, whose old content is dropped, and returns the findings.
// What was read before a break stays in the message. Offsets count from the first byte.
Findings ParseAndCheck(const Schema& schema, std::string_view bytes, Message& message);

// The number of an enumeration that the bytes of a varint stand for.
inline std::int32_t NumberIn(std::string_view varint) {
  return static_cast<std::int32_t>(text::NumberIn(varint.data(), varint.data() + varint.size()));
}

}  // namespace virtual_modem::inspect
