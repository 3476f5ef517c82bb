// SPDX-License-Identifier: BSD-3-Clause
// Which changes of a link are told, and how often.
#include "link_notifications.h"

#include <gtest/gtest.h>

namespace ipmib::agent
{
namespace
{

using namespace std::chrono_literals;

class LinksThatChange : public testing::Test
{
  protected:
    void change(std::uint32_t before, std::uint32_t now, std::chrono::seconds at = 0s, const std::string &context = "")
    {
        notifications.take(context, {7, IPMIB_ADMIN_UP, now, before}, LinkNotifications::Clock::time_point(at));
    }
    std::string told() { return std::exchange(told_, ""); }

    host::Catalogue catalogue{host::Catalogue::Contents{}};
    host::SysUpTime upTime;
    host::Instances instances{catalogue, upTime};
    LinkNotificationSettings settings{"test", "linkNotifications"};
    std::string told_;
    LinkNotifications notifications{
        nullptr, instances, settings, [this](netsnmp_variable_list &variables, const std::string &context) {
            const oid *which = variables.val.objid;
            told_ += context + (which[variables.val_len / sizeof(oid) - 1] == 3 ? "down " : "up ");
            const netsnmp_variable_list *index = variables.next_variable;
            EXPECT_EQ(*index->val.integer, 7);
            EXPECT_EQ(index->name[index->name_length - 1], 7u);
            const netsnmp_variable_list *name = index->next_variable->next_variable->next_variable;
            const auto nameOf = [](const netsnmp_variable_list &variable) {
                return std::string(reinterpret_cast<const char *>(variable.val.string), variable.val_len);
            };
            EXPECT_EQ(name == nullptr ? "" : nameOf(*name), context);
        }};
};

TEST_F(LinksThatChange, areToldWhenTheyEnterOrLeaveDown)
{
    EXPECT_EQ(settings.read("all"), "");
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN);
    change(IPMIB_OPER_DOWN, IPMIB_OPER_LOWER_LAYER_DOWN);
    change(IPMIB_OPER_LOWER_LAYER_DOWN, IPMIB_OPER_DORMANT);
    change(IPMIB_OPER_DORMANT, IPMIB_OPER_UP);
    EXPECT_EQ(told(), "down up ");
    change(IPMIB_OPER_UP, 0);
    change(0, IPMIB_OPER_UP);
    change(IPMIB_OPER_UP, IPMIB_OPER_NOT_PRESENT);
    change(IPMIB_OPER_NOT_PRESENT, IPMIB_OPER_DOWN);
    EXPECT_EQ(told(), "") << "what comes and goes as a whole is no link that goes up or down";
    settings.read("no");
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN);
    EXPECT_EQ(told(), "");
}

TEST_F(LinksThatChange, areHeldBackWhenTheyFlapAndSayInTheEndHowTheyAre)
{
    EXPECT_EQ(settings.read("3 60"), "");
    for (int i = 0; i < 50; ++i) {
        change(IPMIB_OPER_UP, IPMIB_OPER_DOWN);
        change(IPMIB_OPER_DOWN, IPMIB_OPER_UP);
    }
    EXPECT_EQ(told(), "down up down ");
    notifications.tellWaiting(LinkNotifications::Clock::time_point(19s));
    EXPECT_EQ(told(), "");
    notifications.tellWaiting(LinkNotifications::Clock::time_point(21s));
    EXPECT_EQ(told(), "up ");
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 22s);
    change(IPMIB_OPER_DOWN, IPMIB_OPER_UP, 23s);
    notifications.tellWaiting(LinkNotifications::Clock::time_point(100s));
    EXPECT_EQ(told(), "") << "it is as it was told last";
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 200s);
    EXPECT_EQ(told(), "down ");
}

TEST_F(LinksThatChange, ofSeveralContextsAreHeldBackEachForItself)
{
    const auto tell = [this](std::chrono::seconds at) {
        notifications.tellWaiting(LinkNotifications::Clock::time_point(at));
    };
    EXPECT_EQ(settings.read("2 60"), "");
    notifications.begin({"red", host::Instances::first});
    notifications.begin({"blue", host::Instances::first});
    for (int i = 0; i < 3; ++i) {
        change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 0s, "red");
        change(IPMIB_OPER_DOWN, IPMIB_OPER_UP, 0s, "red");
    }
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 0s, "blue");
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN);
    EXPECT_EQ(told(), "down ") << "those of contexts wait until the platform has worked";
    tell(0s);
    EXPECT_EQ(told(), "reddown redup bluedown ");
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 1s, "red");
    tell(1s);
    EXPECT_EQ(told(), "");
    tell(31s);
    EXPECT_EQ(told(), "reddown ");
    change(IPMIB_OPER_DOWN, IPMIB_OPER_UP, 100s, "red");
    change(IPMIB_OPER_DOWN, IPMIB_OPER_UP, 100s, "blue");
    notifications.end("red");
    tell(100s);
    EXPECT_EQ(told(), "blueup ") << "nothing is told of a context that has ended";
    notifications.begin({"red", host::Instances::first});
    change(IPMIB_OPER_UP, IPMIB_OPER_DOWN, 100s, "red");
    tell(100s);
    EXPECT_EQ(told(), "reddown ");
}

TEST_F(LinksThatChange, wrongSettingsLeaveThemAsTheyWere)
{
    for (const char *line : {"", "maybe", "0 60", "10", "10 0", "10 60 1", "-1 5", "10 60s"}) {
        EXPECT_NE(settings.read(line), "") << line;
        EXPECT_EQ(settings.count(), 10u);
        EXPECT_TRUE(settings.areSent());
    }
}

} // namespace
} // namespace ipmib::agent
