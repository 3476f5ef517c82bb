// SPDX-License-Identifier: BSD-3-Clause
// Device services that answer whatever the fuzzer's bytes say: rows in any order, cursors that stand still, failures at
// any moment. Once the bytes are used up every service fails, so that no walk goes on for ever by the device's fault.
#pragma once

#include "bytes.h"

#include <cstddef>

namespace ipmib::fuzz
{

// The services answer from here from now on.
void answerFrom(Bytes &bytes);

// Iterators that were opened and not closed.
std::size_t openIterators();

} // namespace ipmib::fuzz
