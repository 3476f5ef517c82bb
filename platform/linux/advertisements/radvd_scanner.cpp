// SPDX-License-Identifier: BSD-3-Clause
// Cuts radvd.conf into tokens.
#include "advertisements/radvd_scanner.h"

#include <algorithm>

namespace ipmib::platform
{
namespace
{

// A # inside a word belongs to the word, as radvd has it: only one that begins a token begins a comment.
bool isWordCharacter(char c)
{
    return c > ' ' && c < '\x7f' && std::string_view("{};\"'").find(c) == std::string_view::npos;
}

// The length of the quoted string that the text begins with, its quotes included; 0 when it does not end.
std::size_t quotedLength(std::string_view text)
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i + 1;
        }
    }
    return 0;
}

} // namespace

void RadvdScanner::skipBlanks()
{
    while (!rest_.empty()) {
        if (rest_[0] == '#') {
            rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size()));
        } else if (rest_[0] == '\n') {
            ++line_;
            rest_.remove_prefix(1);
        } else if (rest_[0] == ' ' || rest_[0] == '\t' || rest_[0] == '\r') {
            rest_.remove_prefix(1);
        } else {
            return;
        }
    }
}

RadvdToken RadvdScanner::take(RadvdToken::Kind kind, std::size_t length)
{
    const RadvdToken token{kind, rest_.substr(0, length), line_};
    line_ += static_cast<unsigned>(std::count(token.text.begin(), token.text.end(), '\n'));
    rest_.remove_prefix(token.text.size());
    return token;
}

RadvdToken RadvdScanner::next()
{
    skipBlanks();
    if (rest_.empty()) {
        return take(RadvdToken::end, 0);
    }
    switch (rest_[0]) {
    case '{':
        return take(RadvdToken::open, 1);
    case '}':
        return take(RadvdToken::close, 1);
    case ';':
        return take(RadvdToken::semicolon, 1);
    case '"':
        if (const std::size_t length = quotedLength(rest_); length != 0) {
            return take(RadvdToken::word, length);
        }
        return take(RadvdToken::bad, 1);
    default:
        break;
    }
    const auto last = std::find_if_not(rest_.begin(), rest_.end(), isWordCharacter);
    const auto length = static_cast<std::size_t>(last - rest_.begin());
    return length != 0 ? take(RadvdToken::word, length) : take(RadvdToken::bad, 1);
}

} // namespace ipmib::platform
