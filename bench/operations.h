// What a caller of the library does, from a record to bytes and back.
#pragma once

#include <google/protobuf/arena.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "records.h"

namespace virtual_modem::bench {

template <typename Message>
bool Serialize(const Message& message, std::string& buffer) {
  if (message.ByteSizeLong() > buffer.size()) return false;
  auto* const out = reinterpret_cast<std::uint8_t*>(buffer.data());
  return message.SerializeWithCachedSizesToArray(out) != nullptr;
}

// Calls use(name, run) for each operation. run() does it once and returns a digest of what it
// decodes.
template <typename Record, typename Use>
void ForEachOperation(const Record& record, const Use& use) {
  using google::protobuf::Arena;
  using Message = typename Record::Message;
  Message filled;
  record.Fill(filled);
  const std::string bytes = filled.SerializeAsString();
  const auto decode = [bytes](Message& message) {
    const auto size = static_cast<int>(bytes.size());
    return message.ParseFromArray(bytes.data(), size) ? Record::Read(message) : 0;
  };

  use("encode", [record, message = Message(), buffer = bytes]() mutable {
    message.Clear();
    record.Fill(message);
    return Serialize(message, buffer);
  });
  use("encode_fresh", [record, buffer = bytes]() mutable {
    Message message;
    record.Fill(message);
    return Serialize(message, buffer);
  });
  use("decode_reused", [decode, message = Message()]() mutable { return decode(message); });
  use("decode_fresh", [decode] {
    Message message;
    return decode(message);
  });
  struct Block {
    alignas(8) char bytes[16 * 1024];
  };
  use("decode_arena", [decode, block = std::make_shared<Block>()] {
    Arena arena(block->bytes, sizeof block->bytes);
    return decode(*Arena::CreateMessage<Message>(&arena));
  });

  // Of a message that is filled already.
  use("to_buffer", [filled, buffer = bytes]() mutable { return Serialize(filled, buffer); });
  use("to_array", [filled, buffer = bytes]() mutable {
    return filled.SerializeToArray(buffer.data(), static_cast<int>(buffer.size()));
  });
  use("to_string", [filled] { return filled.SerializeAsString(); });
  use("to_ostream", [filled] {
    std::ostringstream out;
    return filled.SerializeToOstream(&out);
  });
}

}  // namespace virtual_modem::bench
