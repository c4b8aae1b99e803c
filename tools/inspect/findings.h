// What an encoded message holds, or lacks, beyond what its fields show.
#pragma once

#include <google/protobuf/message.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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
  // No further text will be kept, so that none need be made.
  bool full() const;

  std::size_t count(Kind kind) const { return counts_.at(kind); }
  bool empty() const;
  // A receiver takes the message: it parses and has every required field.
  bool acceptable() const { return count(kMalformed) + count(kMissing) == 0; }

  // One line each, behind "# ", which makes them comments of the text format.
  std::string Lines() const;
  // Such as "malformed, required fields missing: 2".
  std::string Summary() const;

 private:
  std::vector<std::string> texts_;
  std::array<std::size_t, kKinds> counts_{};
};

// Parses the bytes into the message, whose old content is dropped, and tells what there is to tell.
// What was read before a break stays in the message. Offsets count from the first byte.
Findings ParseAndCheck(std::string_view bytes, google::protobuf::Message& message);

}  // namespace virtual_modem::inspect
