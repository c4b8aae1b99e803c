#include "text/mask.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace virtual_modem::text {
namespace {

std::size_t VarintSize(std::uint64_t value) {
  std::size_t size = 1;
  for (; value >= 0x80; value >>= 7U) ++size;
  return size;
}

char* WriteVarint(std::uint64_t value, char* to) {
  for (; value >= 0x80; value >>= 7U) *to++ = static_cast<char>(value | 0x80U);
  *to++ = static_cast<char>(value);
  return to;
}

class Masker : public Handler {
 public:
  Masker(const Tables& tables, Show show, std::string& out)
      : tables_(tables), shape_(show == Show::kShape), out_(out) {}

  void Number(const Level& /*level*/, const Field& field, std::uint64_t value) {
    Tag(field, kVarint);
    const bool masked = field.subscriber_data || (shape_ && field.repeated);
    Varint(masked ? 0 : value);
  }
  void Enum(const Level& /*level*/, const Field& field, std::uint64_t value,
            std::string_view /*name*/) {
    Tag(field, kVarint);
    Varint(value);
  }
  void String(const Level& /*level*/, const Field& field, std::string_view bytes) {
    Tag(field, kLengthDelimited);
    Varint(bytes.size());
    if (field.subscriber_data || shape_) {
      out_.append(bytes.size(), 'X');
    } else {
      Append(out_, bytes);
    }
  }
  // The length comes last: masked bytes are fewer than those they stand for.
  std::size_t Begin(const Level& /*level*/, const Field& field) {
    Tag(field, kLengthDelimited);
    return out_.size();
  }
  void End(const Level& /*level*/, const Field& /*field*/, std::size_t mark) {
    const std::size_t size = out_.size() - mark;
    const std::size_t length = VarintSize(size);
    out_.append(length, '\0');
    std::memmove(&out_[mark + length], &out_[mark], size);
    WriteVarint(size, &out_[mark]);
  }

 private:
  void Tag(const Field& field, WireType type) {
    Varint(std::uint64_t{tables_.NumberOf(field)} << 3U | type);
  }
  void Varint(std::uint64_t value) {
    char bytes[10];
    out_.append(bytes, static_cast<std::size_t>(WriteVarint(value, bytes) - bytes));
  }

  const Tables& tables_;
  const bool shape_;
  std::string& out_;
};

}  // namespace

Outcome AppendMasked(const Tables& tables, unsigned message, std::string_view bytes, Show show,
                     std::string& masked) {
  Masker masker(tables, show, masked);
  return WalkMessage(tables, message, bytes, masker);
}

}  // namespace virtual_modem::text
