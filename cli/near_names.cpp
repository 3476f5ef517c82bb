// SPDX-License-Identifier: BSD-3-Clause
#include "near_names.h"

#include <algorithm>
#include <cctype>

namespace ipmib::cli
{
namespace
{

constexpr std::size_t longestWord = 64; // nobody mistypes a name into something longer
constexpr std::size_t mostNames = 3;

bool sameLetter(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

} // namespace

std::size_t editDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> now(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        now[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast = std::move(last);
        last = now;
        now[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (sameLetter(a[i - 1], b[j - 1]) ? 0 : 1);
            now[j] = std::min({last[j] + 1, now[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && sameLetter(a[i - 1], b[j - 2]) && sameLetter(a[i - 2], b[j - 1])) {
                now[j] = std::min(now[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return now[b.size()];
}

std::string didYouMean(std::string_view word, const std::vector<std::string> &names)
{
    if (word.size() < 2 || word.size() > longestWord) {
        return "";
    }
    std::size_t nearest = std::max<std::size_t>(1, word.size() / 3);
    std::vector<std::string> meant;
    for (const std::string &name : names) {
        const std::size_t distance = editDistance(word, name);
        if (distance < nearest) {
            nearest = distance;
            meant.clear();
        }
        if (distance == nearest && distance < name.size() && std::ranges::find(meant, name) == meant.end()) {
            meant.push_back(name);
        }
    }
    if (meant.empty() || meant.size() > mostNames) {
        return "";
    }
    std::string text = "; did you mean ";
    for (std::size_t i = 0; i < meant.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == meant.size() ? " or " : ", ") + meant[i];
    }
    return text + "?";
}

} // namespace ipmib::cli
