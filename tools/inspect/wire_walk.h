// Reads the encoded form of a message byte by byte, as the runtime's own parser does, and tells
// where things are that a parsed message no longer knows.
#pragma once

#include <google/protobuf/descriptor.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_modem::inspect {

// A field below a message; index is the place in a list of messages, -1 for any other field.
struct PathStep {
  const google::protobuf::FieldDescriptor* field;
  int index;
};

// Such as "calls[0].number".
std::string ToString(const std::vector<PathStep>& path);

// Told what the walk comes by. Offsets are from the beginning of the bytes walked.
class WireVisitor {
 public:
  virtual ~WireVisitor() = default;
  // A closed enumeration does not declare the number; path ends with the field.
  virtual void UndeclaredValue(const std::vector<PathStep>& path, std::int32_t number,
                               std::size_t offset) = 0;
  // A number that the message at path does not declare.
  virtual void UnknownField(const std::vector<PathStep>& path, int number, int wire_type,
                            std::size_t offset, std::size_t size) = 0;
  // A declared field, the end of path, that came with a wire type of another kind.
  virtual void WrongWireType(const std::vector<PathStep>& path, int wire_type,
                             std::size_t offset) = 0;
  // The bytes break; the walk is over.
  virtual void Malformed(const std::vector<PathStep>& path, std::size_t offset,
                         const std::string& why) = 0;
};

// False when the bytes are malformed.
bool WalkWire(std::string_view bytes, const google::protobuf::Descriptor& type,
              WireVisitor& visitor);

// Such as "varint".
const char* WireTypeName(int wire_type);

}  // namespace virtual_modem::inspect
