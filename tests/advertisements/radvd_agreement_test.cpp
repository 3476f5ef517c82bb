// SPDX-License-Identifier: BSD-3-Clause
// Our parser and radvd itself on the same files: what radvd takes we take; what it refuses we refuse, unless it is
// something that another version of radvd takes.
#include "advertisements/radvd_conf.h"
#include "programs.h"

#include <unistd.h>

#include <fstream>

namespace
{

using namespace ipmib::platform;

bool radvdTakes(const std::string &text)
{
    const std::string path = testing::TempDir() + "agreement" + std::to_string(getpid()) + ".conf";
    std::ofstream(path) << text;
    const int status = std::system(("radvd --configtest --config " + path + " > /dev/null 2>&1").c_str());
    std::remove(path.c_str());
    return status == 0;
}

bool weTake(const std::string &text)
{
    RadvdConf conf;
    return !parseRadvdConf(text, "agreement.conf", conf).has_value();
}

TEST(RadvdAgreement, bothTakeTheSameFiles)
{
    IPMIB_NEEDS_PROGRAM("radvd");
    for (const char *options : {
             "",
             "AdvSendAdvert on;",
             "AdvSendAdvert on",
             "AdvSendAdvert;",
             "AdvSendAdvert yes;",
             "AdvSendAdvert on off;",
             "AdvSendAdvert on;;",
             "; AdvSendAdvert on;",
             "AdvSendAdvert on; AdvSendAdvert off;",
             "AdvLinkMTU 1400;",
             "AdvLinkMTU 4294967295;",
             "AdvLinkMTU 4294967296;",
             "AdvLinkMTU -1;",
             "AdvLinkMTU 0x500;",
             "AdvLinkMTU 1400.0;",
             "MaxRtrAdvInterval 10.5; MinRtrAdvInterval 3;",
             "MaxRtrAdvInterval 10.; MinRtrAdvInterval 3;",
             "MaxRtrAdvInterval .5;",
             "MaxRtrAdvInterval 007;",
             "MaxRtrAdvInterval 1.2.3;",
             "AdvDefaultLifetime infinity;",
             "AdvCurHopLimit 300;",
             "AdvManagedFlag on;#comment",
             "AdvManagedFlag on; # }; comment\n",
             "AdvManagedFlag#no comment\n on;",
             "/* AdvManagedFlag on; */",
             "// AdvManagedFlag on;\n",
             "prefix 2001:db8::/64 { };",
             "prefix 2001:db8::/64 { }",
             "prefix 2001:db8::/64 { AdvOnLink on; AdvValidLifetime infinity; };",
             "prefix 2001:db8::/64 { AdvOnLink on };",
             "prefix 2001:db8::/64 { AdvOnLink on; ",
             "prefix 2001:db8::/64 { }; AdvManagedFlag on;",
             "route ::/0 { AdvRoutePreference high; };",
             "RDNSS 2001:db8::1 2001:db8::2 { AdvRDNSSLifetime 1200; };",
             "DNSSL example.com lab.example.com { AdvDNSSLLifetime 1200; };",
             "clients { fe80::1; fe80::2; };",
             "AdvRASrcAddress { fe80::1; };",
             "abro fe80::a200:0:0:1/64 { AdvVersionLow 10; AdvVersionHigh 2; };",
             "lowpanco { AdvContextID 2; };",
             "AdvDefaultPreference low;",
         }) {
        const std::string text = std::string("interface lo {\n") + options + "\n};\n";
        EXPECT_EQ(weTake(text), radvdTakes(text)) << text;
    }
}

TEST(RadvdAgreement, bothTakeTheSameOutlines)
{
    IPMIB_NEEDS_PROGRAM("radvd");
    for (const char *text : {"interface lo { };", "interface lo { }", "interface lo {", "interface lo }; ",
                             "interface { };", "interface lo lo2 { };", "interface lo { }; interface eth0 { };",
                             "interface lo { }; interface lo { };", "interfaces lo { };", "AdvSendAdvert on;",
                             "interface lo { }; };", "interface lo\n{\n}\n;\n", "# only\ninterface lo { };"}) {
        EXPECT_EQ(weTake(text), radvdTakes(text)) << text;
    }
}

} // namespace
