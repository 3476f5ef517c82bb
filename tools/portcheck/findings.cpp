// SPDX-License-Identifier: BSD-3-Clause
// What a check found, in words.
#include "findings.h"

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

constexpr PromiseText texts[] = {
#define PROMISE(name, promised, breaks) {#name, promised, breaks},
#include "promises.def"
#undef PROMISE
};

} // namespace

const PromiseText &textOf(Promise promise)
{
    return texts[static_cast<std::size_t>(promise)];
}

bool Report::breaks(Promise promise) const
{
    return std::any_of(broken.begin(), broken.end(), [promise](const Finding &one) { return one.promise == promise; });
}

std::string Report::text() const
{
    constexpr std::size_t shown = 3; // of each promise
    std::string text;
    for (const std::string &fact : facts) {
        text += fact + "\n";
    }
    for (std::size_t number = 0; number < static_cast<std::size_t>(Promise::count); ++number) {
        const auto promise = static_cast<Promise>(number);
        std::size_t seen = 0;
        for (const Finding &finding : broken) {
            if (finding.promise != promise) {
                continue;
            }
            if (seen++ == 0) {
                text += std::string("\nBROKEN: ") + textOf(promise).promised + "\n";
            }
            if (seen <= shown) {
                text += "  " + finding.service + ": " + finding.seen + "\n";
            }
        }
        if (seen > shown) {
            text += "  and " + std::to_string(seen - shown) + " more\n";
        }
        if (seen != 0) {
            text += std::string("  So ") + textOf(promise).breaks + ".\n";
        }
    }
    return text;
}

} // namespace ipmib::portcheck
