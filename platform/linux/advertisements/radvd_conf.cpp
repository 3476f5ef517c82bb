// SPDX-License-Identifier: BSD-3-Clause
// Parser of radvd.conf. Whatever an interface's definition holds beside the options that count is skipped by its shape,
// so that a newer radvd's file is read too.
#include "advertisements/radvd_conf.h"

#include "advertisements/radvd_scanner.h"

#include "support/printable.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace ipmib::platform
{
namespace
{

using Words = std::vector<std::string_view>; // an option's name and its arguments

bool isIdentifier(std::string_view word)
{
    return std::isalpha(static_cast<unsigned char>(word[0])) != 0 &&
           std::all_of(word.begin(), word.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
}

std::string quoted(std::string_view text)
{
    return "'" + std::string(text.substr(0, 40)) + "'";
}

class Parser
{
  public:
    Parser(std::string_view text, std::string_view file) : scanner_(text), file_(file) { advance(); }

    std::optional<std::string> parse(RadvdConf &conf)
    {
        while (token_.kind != RadvdToken::end && readInterface(conf)) {
        }
        return error_;
    }

  private:
    void advance() { token_ = scanner_.next(); }

    // Each of them returns false, so that its caller can return what it returns.
    bool fail(unsigned line, const std::string &expected, const std::string &found)
    {
        // A quoted string may go over several lines.
        error_ = support::printable(std::string(file_) + ":" + std::to_string(line) + ": expected " + expected +
                                    ", found " + found);
        return false;
    }
    bool fail(const std::string &expected)
    {
        return fail(token_.line, expected,
                    token_.kind == RadvdToken::end ? "the end of the file" : quoted(token_.text));
    }

    bool expect(RadvdToken::Kind kind, const std::string &expected)
    {
        if (token_.kind != kind) {
            return fail(expected);
        }
        advance();
        return true;
    }

    bool readInterface(RadvdConf &conf)
    {
        RadvdInterface interface;
        interface.line = token_.line;
        if (token_.kind != RadvdToken::word || !sameRadvdName(token_.text, "interface")) {
            return fail("'interface'");
        }
        advance();
        const std::string name(token_.text);
        if (!expect(RadvdToken::word, "the name of an interface") ||
            !expect(RadvdToken::open, "'{' after the name of interface " + name)) {
            return false;
        }
        if (conf.count(name) != 0) {
            return fail(interface.line, "one definition of interface " + name, "a second one");
        }
        while (token_.kind != RadvdToken::close) {
            if (!readOption(interface)) {
                return false;
            }
        }
        advance();
        completeRadvdInterface(interface);
        conf.emplace(name, std::move(interface));
        return expect(RadvdToken::semicolon, "';' after the '}' of interface " + name);
    }

    // NAME ARGUMENT... ; or NAME ARGUMENT... { ... } ;
    bool readOption(RadvdInterface &interface)
    {
        if (token_.kind != RadvdToken::word || !isIdentifier(token_.text)) {
            return fail("an option or '}'");
        }
        const std::string name(token_.text);
        if (isRadvdOption(name)) {
            advance();
            if (!readValue(interface, name)) {
                return false;
            }
        } else if (!skipWords(name) || (token_.kind == RadvdToken::open && !skipBlock(interface))) {
            return false;
        }
        return expect(RadvdToken::semicolon, "';' to end " + name);
    }

    bool readValue(RadvdInterface &interface, const std::string &name)
    {
        const bool present = token_.kind == RadvdToken::word;
        const char *expected = setRadvdOption(interface, name, present ? token_.text : std::string_view());
        if (expected != nullptr) {
            return fail(expected + (" after " + name));
        }
        advance();
        return true;
    }

    bool skipWords(const std::string &name)
    {
        for (advance(); token_.kind == RadvdToken::word; advance()) {
            if (isRadvdOption(token_.text)) {
                return fail("';' to end " + name);
            }
        }
        return true;
    }

    // The block of a prefix, a route, name servers, clients or the like, and the blocks within it.
    bool skipBlock(RadvdInterface &interface)
    {
        RadvdToken before; // the word that the present one may be the value of
        unsigned depth = 0;
        do {
            if (token_.kind == RadvdToken::open) {
                ++depth;
            } else if (token_.kind == RadvdToken::close) {
                if (before.kind == RadvdToken::word || before.kind == RadvdToken::close) {
                    return fail("';' after " + quoted(before.text));
                }
                --depth;
            } else if (token_.kind == RadvdToken::word) {
                if (sameRadvdName(before.text, "AdvRouterAddr")) { // the one that changes the interface's limits
                    setRadvdOption(interface, before.text, token_.text);
                }
            } else if (token_.kind != RadvdToken::semicolon) {
                return fail("an option or '}'");
            }
            before = token_;
            advance();
        } while (depth != 0);
        return true;
    }

    RadvdScanner scanner_;
    std::string_view file_;
    RadvdToken token_;
    std::optional<std::string> error_;
};

} // namespace

std::optional<std::string> parseRadvdConf(std::string_view text, std::string_view file, RadvdConf &conf)
{
    RadvdConf fresh;
    std::optional<std::string> error = Parser(text, file).parse(fresh);
    if (!error) {
        conf.swap(fresh);
    }
    return error;
}

} // namespace ipmib::platform
