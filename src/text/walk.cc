#include "text/walk.h"

namespace virtual_modem::text {

std::string PathTo(const Tables& tables, const Level& level) {
  if (level.field == nullptr) return {};
  std::string path = PathTo(tables, *level.above, *level.field);
  if (level.index >= 0) path.append("[").append(std::to_string(level.index)).append("]");
  return path;
}

std::string PathTo(const Tables& tables, const Level& level, const Field& field) {
  std::string path = PathTo(tables, level);
  if (!path.empty()) path += '.';
  return path.append(tables.NameOf(field));
}

std::string Explain(const Outcome& outcome) {
  const std::string detail = std::to_string(outcome.detail);
  const std::string item = std::string("a ") + outcome.item;
  switch (outcome.fault) {
    case Fault::kEndsEarly:
      return "the input ends " + detail + " bytes early";
    case Fault::kEndsInside:
      return "the input ends inside " + item;
    case Fault::kOverruns:
      return item + " runs past the end of the message around it";
    case Fault::kItemTooLong:
      return item + " is longer than " + detail + " bytes";
    case Fault::kLengthTooLarge:
      return "a length is over 2 GiB";
    case Fault::kShortInput:
    case Fault::kShortMessage:
      return detail + " bytes announced, " + std::to_string(outcome.left) +
             " left before the end of the " +
             (outcome.fault == Fault::kShortInput ? "input" : "message around");
    case Fault::kEndGroup:
      return "a group ends that was not begun";
    case Fault::kOtherGroup:
      return "another group ends than was begun";
    case Fault::kNoWireType:
      return "there is no wire type " + detail;
    case Fault::kTooDeep:
      return "more than " + std::to_string(kMaxDepth) + " levels of nesting";
    case Fault::kFieldZero:
      return "a field has number 0";
    case Fault::kNone:
      break;
  }
  return {};
}

bool Reader::Fail(Fault fault, const char* where, std::uint64_t detail, std::uint64_t left,
                  const char* item) {
  outcome_.fault = fault;
  outcome_.offset = OffsetOf(where);
  outcome_.detail = detail;
  outcome_.left = left;
  outcome_.item = item;
  return false;
}

bool Reader::ReadLongVarint(int max_bytes, const char* item, std::uint64_t& value) {
  value = 0;
  const char* at = at_;
  for (int i = 0; i < max_bytes; ++i, ++at) {
    if (at == limit_) {
      return Fail(IsLast() ? Fault::kEndsInside : Fault::kOverruns, at, 0, 0, item);
    }
    const auto byte = static_cast<std::uint8_t>(*at);
    value |= static_cast<std::uint64_t>(byte & 0x7FU) << (7U * static_cast<unsigned>(i));
    if (byte < 0x80) {
      at_ = at + 1;
      return true;
    }
  }
  return Fail(Fault::kItemTooLong, at_, static_cast<std::uint64_t>(max_bytes), 0, item);
}

bool Reader::FailShort(std::size_t size) {
  return Fail(IsLast() ? Fault::kShortInput : Fault::kShortMessage, at_, size, Left());
}

bool Reader::Skip(std::uint32_t number, unsigned wire_type, const char* start, int& depth) {
  std::uint64_t value = 0;
  std::size_t size = 0;
  switch (wire_type) {
    case kVarint:
      return ReadVarint(kMaxVarintBytes, "varint", value);
    case kFixed64:
      return SkipBytes(8);
    case kLengthDelimited:
      return ReadLength(size) && SkipBytes(size);
    case kStartGroup:
      return SkipGroup(number, start, depth);
    case kEndGroup:
      return Fail(Fault::kEndGroup, start);
    case kFixed32:
      return SkipBytes(4);
    default:
      return Fail(Fault::kNoWireType, start, wire_type);
  }
}

bool Reader::SkipGroup(std::uint32_t number, const char* start, int& depth) {
  if (++depth > kMaxDepth) return Fail(Fault::kTooDeep, start);
  for (;;) {
    const char* inner = at_;
    std::uint64_t tag = 0;
    if (!ReadVarint(kMaxTagBytes, "group", tag)) return false;
    const std::uint32_t inner_number = static_cast<std::uint32_t>(tag) >> 3U;
    if (inner_number == 0) return Fail(Fault::kFieldZero, inner);
    const auto wire_type = static_cast<unsigned>(tag & 7U);
    if (wire_type == kEndGroup) {
      if (inner_number != number) return Fail(Fault::kOtherGroup, inner);
      --depth;
      return true;
    }
    if (!Skip(inner_number, wire_type, inner, depth)) return false;
  }
}

}  // namespace virtual_modem::text
