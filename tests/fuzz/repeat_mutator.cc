// Now and then repeats a piece of the input, as chance alone hardly would: what is read again from
// every place shows in long inputs of one piece.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  constexpr std::size_t kFront = 2;  // what the target chooses by
  constexpr std::size_t kLongestPiece = 64;
  constexpr std::size_t kMostTimes = 1U << 15U;
  std::minstd_rand random(seed);
  if (size <= kFront || random() % 64 != 0) return LLVMFuzzerMutate(data, size, max_size);
  const std::size_t begin = kFront + random() % (size - kFront);
  const std::size_t piece = 1 + random() % std::min(size - begin, kLongestPiece);
  const std::size_t end = std::min(max_size, begin + piece * (1 + random() % kMostTimes));
  for (std::size_t at = begin + piece; at < end; ++at) data[at] = data[at - piece];
  return std::max(end, begin + piece);
}
