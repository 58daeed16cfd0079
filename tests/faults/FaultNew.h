// The language's allocation functions, replaced in every form in executables that FaultNew.cpp is linked into. Which
// request is refused is for one other unit of the executable to say.
#pragma once

#include <cstdint>

namespace tavi::faults {

enum class Refusal : uint8_t {
  kNone,
  kNoMemory,  // std::bad_alloc, or null from the forms that do not throw
  kTooLong,   // std::length_error, as containers say that are asked for more than they can ever hold
};

// Asked before each request, of so many bytes. May take no memory.
Refusal RefuseRequest(uint64_t bytes);
// Told after each release of a block.
void NoteRelease();

}  // namespace tavi::faults
