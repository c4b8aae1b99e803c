// A message to begin with, in the text format.
#pragma once

#include <string>

#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

// The required fields of the type and below with values that can be encoded, the others as
// comments; beside each what it is.
std::string Skeleton(const Descriptor& type);

}  // namespace virtual_modem::inspect
