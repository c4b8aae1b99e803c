// What an encoded message holds, or lacks, beyond what its fields show.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/schema/schema.h"
#include "text/walk.h"

namespace virtual_modem::inspect {

// What a walk over the bytes found, in words too.
struct Findings : text::Outcome {
  std::size_t not_utf8 = 0;  // texts whose bytes are not UTF-8 where the output must be
  bool hidden = false;       // the message is not shown, as its data may be of another type
  // What to tell of each, up to a hundred and why the message is malformed.
  std::vector<std::string> texts;

  void Add(std::string text);
  // No further text will be kept, so none need be built.
  bool full() const;

  bool empty() const { return !misfit() && not_utf8 == 0; }
  // One line each, after "# ", which makes them comments of the text format.
  std::string Lines() const;
  // Such as "malformed, required fields missing: 2".
  std::string Summary() const;
};

// There is nothing to tell of bytes with this outcome, and they are as a serializer writes them.
inline bool IsPlain(const text::Outcome& outcome) { return outcome.canonical && !outcome.misfit(); }

// Parses the bytes into the message, whose old content is dropped, and returns the findings.
// What was read before a break stays in the message. Offsets count from the first byte.
Findings ParseAndCheck(const Schema& schema, std::string_view bytes, Message& message);

}  // namespace virtual_modem::inspect
