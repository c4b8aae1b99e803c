#include "inspect/wire_walk.h"

#include <google/protobuf/wire_format_lite.h>

#include <utility>

namespace virtual_modem::inspect {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::internal::WireFormatLite;

// The runtime's limits.
constexpr int kMaxDepth = 100;
constexpr int kMaxTagBytes = 5;
constexpr int kMaxSizeBytes = 5;
constexpr int kMaxVarintBytes = 10;

int WireTypeOf(const FieldDescriptor& field) {
  return WireFormatLite::WireTypeForFieldType(
      static_cast<WireFormatLite::FieldType>(static_cast<int>(field.type())));
}

class Walk {
 public:
  Walk(std::string_view bytes, WireVisitor& visitor) : bytes_(bytes), visitor_(visitor) {}

  // Reads fields up to end. More bytes than there are may have been promised: end lies then behind
  // the last byte, and the message is malformed once they are used up.
  bool ReadMessage(const Descriptor& type, std::size_t end) {
    std::vector<std::pair<int, int>> counts;  // elements so far, of each list of messages
    while (pos_ < end) {
      const std::size_t start = pos_;
      std::uint64_t tag = 0;
      if (pos_ == bytes_.size()) {
        return Break("the input ends " + std::to_string(end - pos_) + " bytes early");
      }
      if (!ReadVarint(end, kMaxTagBytes, "tag", tag)) return false;
      const int number = static_cast<int>(static_cast<std::uint32_t>(tag) >> 3);
      const int wire_type = static_cast<int>(tag & 7);
      if (number == 0) return BreakAt(start, "a field has number 0");
      const FieldDescriptor* field = type.FindFieldByNumber(number);
      if (field == nullptr) {
        if (!Skip(number, wire_type, start, end)) return false;
        visitor_.UnknownField(path_, number, wire_type, start, pos_ - start);
        continue;
      }
      const bool element = field->is_repeated() && field->message_type() != nullptr &&
                           wire_type == WireTypeOf(*field);
      path_.push_back({field, element ? CountElement(counts, number) : -1});
      if (!ReadField(*field, wire_type, start, end)) return false;
      path_.pop_back();
    }
    return true;
  }

 private:
  static int CountElement(std::vector<std::pair<int, int>>& counts, int number) {
    for (auto& [seen, count] : counts) {
      if (seen == number) return ++count;
    }
    counts.emplace_back(number, 0);
    return 0;
  }

  bool BreakAt(std::size_t offset, const std::string& why) {
    visitor_.Malformed(path_, offset, why);
    return false;
  }
  bool Break(const std::string& why) { return BreakAt(pos_, why); }

  // What stands in the way of a value that does not fit before end.
  std::string Shortage(std::size_t end, const std::string& what) const {
    return end >= bytes_.size() ? "the input ends inside " + what
                                : what + " runs past the end of the message around it";
  }

  bool ReadVarint(std::size_t end, int max_bytes, const char* what, std::uint64_t& value) {
    value = 0;
    for (int i = 0; i < max_bytes; ++i) {
      const std::size_t at = pos_ + static_cast<std::size_t>(i);
      if (at >= end || at >= bytes_.size())
        return BreakAt(at, Shortage(end, std::string("a ") + what));
      const auto byte = static_cast<std::uint8_t>(bytes_[at]);
      value |= static_cast<std::uint64_t>(byte & 0x7F) << (7 * i);
      if (byte < 0x80) {
        pos_ = at + 1;
        return true;
      }
    }
    return Break(std::string("a ") + what + " is longer than " + std::to_string(max_bytes) +
                 " bytes");
  }

  // Leaves in size how many bytes follow; they may run past end, see ReadMessage.
  bool ReadSize(std::size_t end, std::size_t& size) {
    std::uint64_t value = 0;
    const std::size_t start = pos_;
    if (!ReadVarint(end, kMaxSizeBytes, "length", value)) return false;
    if (value > 0x7FFFFFFF - 16) return BreakAt(start, "a length is over 2 GiB");
    size = static_cast<std::size_t>(value);
    return true;
  }

  bool SkipBytes(std::size_t size, std::size_t end) {
    const std::size_t limit = end < bytes_.size() ? end : bytes_.size();
    if (size > limit - pos_) {
      return Break(std::to_string(size) + " bytes announced, " + std::to_string(limit - pos_) +
                   " left before the end of the " +
                   (end < bytes_.size() ? "message around" : "input"));
    }
    pos_ += size;
    return true;
  }

  // Skips the value of a field whose tag was read; start is where the tag is.
  bool Skip(int number, int wire_type, std::size_t start, std::size_t end) {
    std::uint64_t value = 0;
    std::size_t size = 0;
    switch (wire_type) {
      case WireFormatLite::WIRETYPE_VARINT:
        return ReadVarint(end, kMaxVarintBytes, "varint", value);
      case WireFormatLite::WIRETYPE_FIXED64:
        return SkipBytes(8, end);
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
        return ReadSize(end, size) && SkipBytes(size, end);
      case WireFormatLite::WIRETYPE_START_GROUP:
        return SkipGroup(number, start, end);
      case WireFormatLite::WIRETYPE_FIXED32:
        return SkipBytes(4, end);
      case WireFormatLite::WIRETYPE_END_GROUP:
        return BreakAt(start, "a group ends that was not begun");
      default:
        return BreakAt(start, "there is no wire type " + std::to_string(wire_type));
    }
  }

  bool SkipGroup(int number, std::size_t start, std::size_t end) {
    if (++depth_ > kMaxDepth) return BreakAt(start, "more than 100 levels of nesting");
    for (;;) {
      const std::size_t inner = pos_;
      std::uint64_t tag = 0;
      if (!ReadVarint(end, kMaxTagBytes, "group", tag)) return false;
      const int inner_number = static_cast<int>(static_cast<std::uint32_t>(tag) >> 3);
      const int wire_type = static_cast<int>(tag & 7);
      if (inner_number == 0) return BreakAt(inner, "a field has number 0");
      if (wire_type == WireFormatLite::WIRETYPE_END_GROUP) {
        if (inner_number != number) return BreakAt(inner, "another group ends than was begun");
        --depth_;
        return true;
      }
      if (!Skip(inner_number, wire_type, inner, end)) return false;
    }
  }

  // Reads the value of a declared field, which is the last step of the path.
  bool ReadField(const FieldDescriptor& field, int wire_type, std::size_t start, std::size_t end) {
    if (wire_type == WireTypeOf(field)) {
      if (field.type() == FieldDescriptor::TYPE_ENUM) return ReadEnum(field, start, end);
      if (field.type() == FieldDescriptor::TYPE_MESSAGE) return ReadSubMessage(field, start, end);
      return Skip(field.number(), wire_type, start, end);
    }
    if (wire_type == WireFormatLite::WIRETYPE_LENGTH_DELIMITED && field.is_packable()) {
      return ReadPacked(field, start, end);
    }
    if (!Skip(field.number(), wire_type, start, end)) return false;
    visitor_.WrongWireType(path_, wire_type, start);
    return true;
  }

  bool ReadEnum(const FieldDescriptor& field, std::size_t start, std::size_t end) {
    std::uint64_t value = 0;
    if (!ReadVarint(end, kMaxVarintBytes, "varint", value)) return false;
    const auto number = static_cast<std::int32_t>(value);
    if (field.enum_type()->FindValueByNumber(number) == nullptr) {
      visitor_.UndeclaredValue(path_, number, start);
    }
    return true;
  }

  bool ReadSubMessage(const FieldDescriptor& field, std::size_t start, std::size_t end) {
    std::size_t size = 0;
    if (!ReadSize(end, size)) return false;
    if (++depth_ > kMaxDepth) return BreakAt(start, "more than 100 levels of nesting");
    // Where the input was cut, the fields that are left of the message are still worth reading.
    const bool cut = end >= bytes_.size();
    if (!cut && size > end - pos_) return SkipBytes(size, end);
    if (!ReadMessage(*field.message_type(), pos_ + size)) return false;
    --depth_;
    return true;
  }

  // Repeated numbers in one length-delimited field, all of them elements of the same list.
  bool ReadPacked(const FieldDescriptor& field, std::size_t start, std::size_t end) {
    std::size_t size = 0;
    if (!ReadSize(end, size)) return false;
    const std::size_t begin = pos_;
    if (!SkipBytes(size, end)) return false;
    const std::size_t packed_end = pos_;
    pos_ = begin;
    while (pos_ < packed_end) {
      const bool read = field.type() == FieldDescriptor::TYPE_ENUM
                            ? ReadEnum(field, start, packed_end)
                            : Skip(field.number(), WireTypeOf(field), start, packed_end);
      if (!read) return false;
    }
    return true;
  }

  std::string_view bytes_;
  WireVisitor& visitor_;
  std::vector<PathStep> path_;
  std::size_t pos_ = 0;
  int depth_ = 0;
};

}  // namespace

std::string ToString(const std::vector<PathStep>& path) {
  std::string text;
  for (const PathStep& step : path) {
    if (!text.empty()) text += '.';
    text += step.field->name();
    if (step.index >= 0) text.append("[").append(std::to_string(step.index)).append("]");
  }
  return text;
}

bool WalkWire(std::string_view bytes, const Descriptor& type, WireVisitor& visitor) {
  return Walk(bytes, visitor).ReadMessage(type, bytes.size());
}

const char* WireTypeName(int wire_type) {
  switch (wire_type) {
    case WireFormatLite::WIRETYPE_VARINT:
      return "varint";
    case WireFormatLite::WIRETYPE_FIXED64:
      return "64-bit";
    case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
      return "length-delimited";
    case WireFormatLite::WIRETYPE_START_GROUP:
      return "group";
    case WireFormatLite::WIRETYPE_FIXED32:
      return "32-bit";
    default:
      return "none";
  }
}

}  // namespace virtual_modem::inspect
