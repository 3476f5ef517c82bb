// SPDX-License-Identifier: BSD-3-Clause
// The same port in C++.
#include "unsorted_port.c"
