// A straight-line codec for the benchmark's records, as one would write it by hand for exactly
// these bytes: fields in the order of their numbers, all of them present, nothing unknown kept.
// It gives up what the library is for (any order, absent and unknown fields, merging) and shows the
// practical limit of the wire format.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "records.h"

namespace virtual_modem::bench {

constexpr std::uint32_t kVarint = 0;
constexpr std::uint32_t kLengthDelimited = 2;

class StraightLineWriter {
 public:
  explicit StraightLineWriter(std::uint8_t* out) : out_(out) {}

  std::uint8_t* end() const { return out_; }

  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t number, const T& field) {
    if constexpr (std::is_arithmetic_v<T>) {
      WriteVarint(number << 3 | kVarint);
      WriteVarint(static_cast<std::uint64_t>(field));  // a negative number takes ten bytes
    } else if constexpr (std::is_same_v<T, std::string>) {
      WriteVarint(number << 3 | kLengthDelimited);
      WriteVarint(field.size());
      std::memcpy(out_, field.data(), field.size());
      out_ += field.size();
    } else {
      WriteVarint(number << 3 | kLengthDelimited);
      WriteRecord(field);
    }
  }

  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t number, const std::vector<T>& field) {
    for (const T& element : field) (*this)(number, element);
  }

 private:
  VIRTUAL_MODEM_INLINE void WriteVarint(std::uint64_t value) {
    while (value >= 0x80) {
      *out_++ = static_cast<std::uint8_t>(value | 0x80);
      value >>= 7;
    }
    *out_++ = static_cast<std::uint8_t>(value);
  }

  // Most records are shorter than 128 bytes: one byte is kept for the length, and the few longer
  // ones are moved.
  template <typename Record>
  VIRTUAL_MODEM_INLINE void WriteRecord(const Record& record) {
    std::uint8_t* const length = out_++;
    Record::ForEachField(record, *this);
    const std::size_t size = out_ - (length + 1);
    if (size >= 0x80) {
      std::uint8_t* content = length + 2;
      for (std::size_t rest = size >> 14; rest != 0; rest >>= 7) ++content;
      std::memmove(content, length + 1, size);
    }
    out_ = length;
    WriteVarint(size);
    out_ += size;
  }

  std::uint8_t* out_;
};

class StraightLineReader {
 public:
  StraightLineReader(const std::uint8_t* in, const std::uint8_t* end) : in_(in), end_(end) {}

  // Every field was found where it belongs and nothing is left.
  bool complete() const { return ok_ && in_ == end_; }

  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t number, T& field) {
    if constexpr (std::is_arithmetic_v<T>) {
      Expect(number << 3 | kVarint);
      field = static_cast<T>(ReadVarint());
    } else {
      Expect(number << 3 | kLengthDelimited);
      ReadDelimited(field);
    }
  }

  // Elements that the vector has already are used again.
  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t number, std::vector<T>& field) {
    std::size_t count = 0;
    while (Skip(number << 3 | kLengthDelimited)) {
      if (count == field.size()) field.emplace_back();
      ReadDelimited(field[count++]);
    }
    field.resize(count);
  }

 private:
  // Tags of up to two bytes, which is all that these messages have.
  VIRTUAL_MODEM_INLINE bool Skip(std::uint32_t tag) {
    if (tag < 0x80) {
      if (in_ == end_ || *in_ != tag) return false;
      ++in_;
      return true;
    }
    if (end_ - in_ < 2 || in_[0] != ((tag & 0x7f) | 0x80) || in_[1] != tag >> 7) return false;
    in_ += 2;
    return true;
  }

  VIRTUAL_MODEM_INLINE void Expect(std::uint32_t tag) {
    if (!Skip(tag)) Fail();
  }

  VIRTUAL_MODEM_INLINE std::uint64_t ReadVarint() {
    if (in_ != end_ && *in_ < 0x80) return *in_++;
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64 && in_ != end_; shift += 7) {
      const std::uint8_t byte = *in_++;
      value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
      if (byte < 0x80) return value;
    }
    Fail();
    return 0;
  }

  template <typename T>
  VIRTUAL_MODEM_INLINE void ReadDelimited(T& field) {
    const std::uint64_t size = ReadVarint();
    if (size > static_cast<std::uint64_t>(end_ - in_)) {
      Fail();
      return;
    }
    if constexpr (std::is_same_v<T, std::string>) {
      field.assign(reinterpret_cast<const char*>(in_), size);
    } else {
      StraightLineReader inner(in_, in_ + size);
      T::ForEachField(field, inner);
      if (!inner.complete()) Fail();
    }
    in_ += size;
  }

  void Fail() { ok_ = false; }

  const std::uint8_t* in_;
  const std::uint8_t* end_;
  bool ok_ = true;
};

// Adds up every field, as Record::Read does for a message.
class RecordDigest {
 public:
  std::uint64_t sum() const { return sum_; }

  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t /*number*/, const T& field) {
    if constexpr (std::is_arithmetic_v<T>) {
      sum_ += Digest(static_cast<std::uint64_t>(field));
    } else if constexpr (std::is_same_v<T, std::string>) {
      sum_ += Digest(field);
    } else {
      T::ForEachField(field, *this);
    }
  }

  template <typename T>
  VIRTUAL_MODEM_INLINE void operator()(std::uint32_t /*number*/, const std::vector<T>& field) {
    for (const T& element : field) (*this)(0, element);
  }

 private:
  std::uint64_t sum_ = 0;
};

}  // namespace virtual_modem::bench
