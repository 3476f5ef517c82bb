// SPDX-License-Identifier: BSD-3-Clause
// The reader of walks: any text gives objects that ascend and are the same when they are written and read again, or one
// line about a mistake.
#include "bytes.h"

#include "support/walk/snmprec.h"
#include "support/walk/walk_text.h"

using namespace ipmib::fuzz;
using namespace ipmib::support;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> text(data, data + size); // exactly as long, so that a sanitizer sees what lies behind it
    try {
        const Walk walk = parseWalk({text.data(), text.size()});
        const RecordedObject *last = nullptr;
        for (const RecordedObject &object : walk.objects) {
            require(last == nullptr || isInFront(last->name, object.name), "objects ascend");
            last = &object;
            const RecordedObject again = parseSnmprec(snmprecLine(object));
            require(again.name == object.name && again.hasSameValue(object), "what is written is read again");
        }
    } catch (const WalkError &error) {
        const std::string line = error.what();
        require(line.starts_with("line "), "a mistake is told with its place");
        require(line.find('\n') == std::string::npos, "a mistake is told in one line");
    }
    return 0;
}
