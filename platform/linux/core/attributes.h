// SPDX-License-Identifier: BSD-3-Clause
// The attributes of one netlink message, or of one nest in it, by type.
#pragma once

#include <libmnl/libmnl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace ipmib::platform
{

// Attributes beyond Max, which a newer kernel may send, are passed over; so is what does not have the size it should.
template <std::size_t Max>
class Attributes
{
  public:
    // Of a message with a family header of that many bytes. A message that is too short for it has none.
    Attributes(const nlmsghdr &message, std::size_t familyHeader)
    {
        if (message.nlmsg_len >= mnl_nlmsg_size(familyHeader)) {
            mnl_attr_parse(&message, static_cast<unsigned>(familyHeader), keep, this);
        }
    }
    // Of that many bytes behind one another.
    Attributes(const std::uint8_t *bytes, std::size_t size) { mnl_attr_parse_payload(bytes, size, keep, this); }
    // Of a nest, which may be absent.
    explicit Attributes(const nlattr *nest)
    {
        if (nest != nullptr) {
            mnl_attr_parse_nested(nest, keep, this);
        }
    }

    const nlattr *operator[](std::size_t type) const { return found_[type]; }

    template <class Value>
    std::optional<Value> get(std::size_t type) const
    {
        const nlattr *attribute = found_[type];
        if (attribute == nullptr || mnl_attr_get_payload_len(attribute) < sizeof(Value)) {
            return std::nullopt;
        }
        Value value;
        std::memcpy(&value, mnl_attr_get_payload(attribute), sizeof value);
        return value;
    }

    // Copies a string into a field of fixed size, cut to fit and always terminated.
    template <std::size_t Size>
    void copyString(std::size_t type, char (&field)[Size]) const
    {
        const std::size_t length = copyBytes(type, field, Size - 1);
        field[length] = '\0';
    }

    // Copies up to `capacity` bytes and returns how many.
    std::size_t copyBytes(std::size_t type, void *field, std::size_t capacity) const
    {
        const nlattr *attribute = found_[type];
        if (attribute == nullptr) {
            return 0;
        }
        const std::size_t length = std::min<std::size_t>(mnl_attr_get_payload_len(attribute), capacity);
        std::memcpy(field, mnl_attr_get_payload(attribute), length);
        return length;
    }

  private:
    static int keep(const nlattr *attribute, void *self)
    {
        const std::uint16_t type = mnl_attr_get_type(attribute);
        if (type <= Max) {
            static_cast<Attributes *>(self)->found_[type] = attribute;
        }
        return MNL_CB_OK;
    }

    std::array<const nlattr *, Max + 1> found_{};
};

} // namespace ipmib::platform
