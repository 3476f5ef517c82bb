// SPDX-License-Identifier: BSD-3-Clause
// The tokens of radvd.conf: words, quoted strings and the punctuation { } ; with comments from # to the end of a line.
#pragma once

#include <string_view>

namespace ipmib::platform
{

struct RadvdToken {
    enum Kind { word, open, close, semicolon, end, bad } kind = end;
    std::string_view text;
    unsigned line = 1;
};

class RadvdScanner
{
  public:
    explicit RadvdScanner(std::string_view text) : rest_(text) {}

    RadvdToken next();

  private:
    void skipBlanks();
    RadvdToken take(RadvdToken::Kind kind, std::size_t length);

    std::string_view rest_;
    unsigned line_ = 1;
};

} // namespace ipmib::platform
