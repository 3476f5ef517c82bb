// SPDX-License-Identifier: BSD-3-Clause
// The process that loads the platform and calls it.
#include "checker.h"

#include "chapters.h"

#include "host/contract.h"

#include "support/printable.h"

#include <unistd.h>

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

class Lines
{
  public:
    explicit Lines(int descriptor) : descriptor_(descriptor) {}

    void chapter(std::size_t number) { send(lineChapter + std::to_string(number)); }
    void end() { send(std::string(1, lineEnd)); }
    void report(const Report &report)
    {
        for (const std::string &fact : report.facts) {
            send(lineFact + support::printable(fact));
        }
        for (const std::string &row : report.rows) {
            send(lineRow + support::printable(row));
        }
        for (const Finding &finding : report.broken) {
            send(lineBroken + std::to_string(static_cast<unsigned>(finding.promise)) + fieldEnd + finding.service +
                 fieldEnd + support::printable(finding.seen));
        }
    }

  private:
    void send(std::string line)
    {
        line += '\n';
        for (std::size_t sent = 0; sent < line.size();) {
            const ssize_t now = write(descriptor_, line.data() + sent, line.size() - sent);
            if (now <= 0) {
                _exit(1); // nobody listens any more
            }
            sent += static_cast<std::size_t>(now);
        }
    }

    int descriptor_;
};

// On a machine that lives, two calls may see two states: a promise counts as broken when a second look, at what the
// platform knows by then, finds so too.
Report checkTwice(const Chapter &chapter, Probe &probe, host::Plugin &plugin)
{
    Report report;
    for (int look = 0; look < 2; ++look) {
        probe.beginPacket();
        chapter.check(probe, plugin.resolver());
        report = probe.takeReport();
        if (report.broken.empty()) {
            break;
        }
    }
    return report;
}

Report failure(Promise promise, const std::string &what, const std::string &seen)
{
    return {{{promise, what, seen}}, {}, {}};
}

std::string join(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

} // namespace

void runChecks(const Options &options, std::size_t chapter, Watch &watch, int descriptor)
{
    Lines lines(descriptor);
    Services services;
    try {
        watch.step("the platform's library is opened");
        const host::SharedLibrary library(host::platformPath(options.plugin), host::SharedLibrary::Symbols::global);
        if (const auto missing = services.bind(library); !missing.empty()) {
            lines.report(failure(Promise::provided, library.path(), "it lacks " + join(missing)));
            lines.end();
            return;
        }
        if (chapter == 0) {
            const auto contract = host::contractOf(library.path());
            lines.report({{},
                          {contract ? "built for " + host::contractText(*contract)
                                    : "built for an unknown contract: IPMIB_CONTRACT_NOTE; is in none of its sources"},
                          {}});
        }
        watch.step("the platform's start");
        host::Plugin plugin(options.plugin);
        Probe probe(services, plugin.platform(), watch);
        probe.clockTime = options.clockTime;
        for (; chapter < chapters().size(); ++chapter) {
            lines.chapter(chapter);
            const Report report = checkTwice(chapters()[chapter], probe, plugin);
            lines.report(report);
            if (report.breaks(Promise::running)) {
                break; // a service that does not run has nothing to say
            }
        }
        lines.chapter(chapters().size());
        watch.step("the platform's stop");
    } catch (const std::runtime_error &error) {
        lines.report(failure(Promise::starts, "the plug-ins", error.what()));
    }
    lines.end();
}

} // namespace ipmib::portcheck
