// SPDX-License-Identifier: BSD-3-Clause
// The kinds of interfaces that a scenario can name. All of them are in the standard selection; what it leaves out, such
// as a loopback interface (24), can be given as a number, and is then in no table that walks over interfaces.
#include "scenario/interface_types.h"

namespace ipmib::simulated
{
namespace
{

constexpr Word types[] = {
    {"ethernet", 6}, {"other", 1}, {"ppp", 23}, {"serial", 22}, {"slip", 28}, {"wifi", 71},
};
constexpr std::uint32_t usual = 6;

} // namespace

std::uint8_t readInterfaceType(Object &object)
{
    const auto type = object.find("type");
    if (!type) {
        return usual;
    }
    return static_cast<std::uint8_t>(type->isNumber() ? type->number(1, 255) : type->word(types));
}

} // namespace ipmib::simulated
