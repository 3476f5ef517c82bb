# SPDX-License-Identifier: BSD-3-Clause
# How a trial of what is packed ends when it does not succeed; read by bash from the project's folder.

fail() {
    echo "FAILED: $*" >&2
    exit 1
}
skip() {
    echo "skipped: $*"
    exit 0
}
