#include "text/mask.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace virtual_modem::text {
namespace {

// Makes the varint at that place 0 in as many bytes; it may be cut. Returns where it ends.
char* MaskVarint(char* at, const char* end) {
  while (at != end) {
    const bool more = Continues(*at);
    *at++ = more ? '\x80' : '\0';
    if (!more) break;
  }
  return at;
}

// Copies the bytes, but for what is to be hidden.
class Masker : public Handler {
 public:
  Masker(std::string_view bytes, Show show, bool keep_sizes, std::string& out)
      : bytes_(bytes),
        copied_(bytes.data()),
        at_(copied_),
        shape_(show == Show::kShape),
        keep_sizes_(keep_sizes),
        out_(out) {}

  void Reached(const char* place) { at_ = place; }

  void Number(const Level& /*level*/, const Field& field, std::uint64_t /*value*/) {
    if (!field.subscriber_data && !(shape_ && field.repeated)) return;
    const char* begin = at_ - 1;
    while (Continues(begin[-1])) --begin;  // before it ends a tag, a length or a number
    CopyTo(begin);
    if (keep_sizes_) {
      CopyTo(at_);
      char* end = out_.data() + out_.size();
      MaskVarint(end - (at_ - begin), end);
    } else {
      out_.append(1, '\0');
      copied_ = at_;
    }
  }

  void String(const Level& /*level*/, const Field& field, std::string_view bytes) {
    if (!field.subscriber_data && !shape_) return;
    CopyTo(bytes.data());
    FillTo(bytes.data() + bytes.size());
  }

  std::size_t Begin(const Level& /*level*/, const Field& /*field*/) { return BeginPacked(); }
  void End(const Level& /*level*/, const Field& /*field*/, std::size_t mark) { EndPacked(mark); }
  std::size_t BeginPacked() {
    CopyTo(at_);
    return out_.size();
  }
  // Mends the length, which ends at the mark: masked bytes may be fewer.
  void EndPacked(std::size_t mark) {
    CopyTo(at_);
    if (keep_sizes_) return;
    const std::size_t size = out_.size() - mark;
    char* const content = &out_[mark];
    char* begin = content - 1;
    while (Continues(begin[-1])) --begin;  // before it ends a tag
    char* at = begin;
    std::size_t rest = size;
    for (; rest >= 0x80; rest >>= 7U) *at++ = static_cast<char>(rest | 0x80U);
    *at++ = static_cast<char>(rest);
    if (at == content) return;
    std::copy(content, content + size, at);
    out_.resize(out_.size() - static_cast<std::size_t>(content - at));
  }

  void Unknown(const Level& /*level*/, const Field* /*field*/, std::uint32_t /*number*/,
               WireType /*type*/, std::string_view whole, std::string_view /*value*/) {
    MaskFields(whole);
  }

  void Malformed(const Level& /*level*/, const Outcome& outcome) {
    MaskFields({bytes_.data() + outcome.broken_from, outcome.broken_to - outcome.broken_from});
    FillTo(bytes_.data() + bytes_.size());
  }

  void Finish() { CopyTo(bytes_.data() + bytes_.size()); }

 private:
  void CopyTo(const char* place) {
    if (place <= copied_) return;
    Append(out_, {copied_, static_cast<std::size_t>(place - copied_)});
    copied_ = place;
  }
  void FillTo(const char* place) {
    out_.append(static_cast<std::size_t>(place - copied_), 'X');
    copied_ = place;
  }

  // Masks the values of fields, the last of which may be cut anywhere: tags and lengths stay. What
  // is in a group is masked like what is around it.
  void MaskFields(std::string_view fields) {
    CopyTo(fields.data() + fields.size());
    const char* const end = out_.data() + out_.size();
    char* at = &out_[out_.size() - fields.size()];
    while (at != end) {
      const auto type = static_cast<unsigned>(*at) & 7U;
      char* value = AfterVarint(at, end);
      std::size_t size = 0;
      char mask = '\0';
      if (type == kLengthDelimited && !Continues(value[-1])) {
        at = value;
        value = AfterVarint(at, end);
        size = static_cast<std::size_t>(NumberIn(at, value));
        mask = 'X';
      } else if (type == kFixed64 || type == kFixed32) {
        size = type == kFixed64 ? 8 : 4;
      }
      if (value == at || Continues(value[-1])) {  // a tag or a length that is cut
        MaskVarint(at, end);
        return;
      }
      at = type == kVarint ? MaskVarint(value, end) : value;
      const auto left = static_cast<std::size_t>(end - at);
      if (size > left) size = left;
      std::memset(at, mask, size);
      at += size;
    }
  }

  const std::string_view bytes_;
  const char* copied_;  // up to here
  const char* at_;
  const bool shape_;
  const bool keep_sizes_;  // masked numbers take as many bytes as before
  std::string& out_;
};

}  // namespace

Outcome AppendMasked(const Tables& tables, unsigned message, std::string_view bytes, Show show,
                     std::string& masked) {
  const std::size_t before = masked.size();
  for (bool keep_sizes = false;; keep_sizes = true) {
    Masker masker(bytes, show, keep_sizes, masked);
    const Outcome outcome = WalkMessage(tables, message, bytes, masker);
    masker.Finish();
    if (keep_sizes || !outcome.malformed()) return outcome;
    masked.resize(before);
  }
}

}  // namespace virtual_modem::text
