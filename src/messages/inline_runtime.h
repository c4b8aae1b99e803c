// Included ahead of each generated unit by the build for the device, which is for size (-Oz): there
// clang turns the runtime's smallest functions (read a tag, read or write a number, make room for a
// field) into calls, and each field pays for several. This forces the functions of five headers
// inline. What that costs and gains: bench/README.md.
//
// Each of the five is preceded by what it includes, so that only its own functions are forced.
#pragma once

#include <google/protobuf/arena.h>
#include <google/protobuf/explicitly_constructed.h>
#include <google/protobuf/port.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/hash.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/stubs/once.h>
#include <google/protobuf/stubs/strutil.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

// The order matters.
// clang-format off
#ifdef __clang__
#pragma clang attribute push(__attribute__((always_inline)), apply_to = function)
#endif
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/metadata_lite.h>
#include <google/protobuf/message_lite.h>
#include <google/protobuf/repeated_ptr_field.h>
#ifdef __clang__
#pragma clang attribute pop
#endif

#include <google/protobuf/endian.h>
#include <google/protobuf/implicit_weak_message.h>
#include <google/protobuf/inlined_string_field.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/wire_format_lite.h>

#ifdef __clang__
#pragma clang attribute push(__attribute__((always_inline)), apply_to = function)
#endif
#include <google/protobuf/parse_context.h>
#ifdef __clang__
#pragma clang attribute pop
#endif
// clang-format on
