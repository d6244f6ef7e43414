// What the inputs of a target are, for the mutator that is linked to it.
#pragma once

#include <cstddef>

#include "structure_mutator.h"

namespace dorvex::fuzz {

struct InputForm {
  std::size_t headerSize;  // bytes before the document, which are changed blindly
  Level level;
};

// Each target that is linked with custom_mutator.cpp has one.
extern const InputForm kInputForm;

}  // namespace dorvex::fuzz
