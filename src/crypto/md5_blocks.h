// The MD5 compression over whole blocks.
#pragma once

#include "crypto/md5_steps.h"

namespace qv {

// Runs the MD5 compression over `count` blocks of 64 bytes each; none is fine.
void TransformMd5Blocks(Md5Words& words, const void* blocks, std::size_t count) noexcept;

}  // namespace qv
