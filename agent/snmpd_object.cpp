// SPDX-License-Identifier: BSD-3-Clause
// The object that a running snmpd loads: `dlmod ipmib .../ipmib_snmpd.so`. It hears of its settings after it is loaded,
// line by line, so it begins to serve when the configuration has been read.

#include "contexts.h"
#include "frontend.h"
#include "link_notifications.h"
#include "log.h"
#include "net_snmp.h"
#include "ownership_report.h"
#include "route_limit.h"
#include "serve_settings.h"
#include "varbind.h"

#include "tables/served_device.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>

namespace
{

using namespace ipmib;
using namespace ipmib::agent;

constexpr const char *fileType = "snmpd";
constexpr const char *directive = "ipmibServe";
constexpr const char *routesDirective = "ipmibRoutes";
constexpr const char *linksDirective = "ipmibLinkNotifications";
constexpr const char *contextDirective = "ipmibContext";
constexpr const char *contextsDirective = "ipmibContexts";
constexpr const char *communityDirective = "ipmibContextCommunity";
constexpr const char *platformDirective = "ipmibPlatform";
constexpr const char *optionDirective = "ipmibPlatformOption";

// This object's symbols for everybody, as long as it lives: the module looks for its agent's among them.
class GlobalSymbols
{
  public:
    GlobalSymbols()
    {
        static const char place = 0;
        Dl_info self{};
        if (dladdr(&place, &self) != 0) {
            path_ = self.dli_fname;
            handle_ = dlopen(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
        }
        if (handle_ == nullptr) {
            throw std::runtime_error("the object does not find itself");
        }
    }
    ~GlobalSymbols()
    {
        if (handle_ != nullptr) {
            dlclose(handle_);
        }
    }
    GlobalSymbols(const GlobalSymbols &) = delete;
    GlobalSymbols &operator=(const GlobalSymbols &) = delete;

    std::string directory() const { return std::filesystem::path(path_).parent_path(); }

  private:
    std::string path_;
    void *handle_ = nullptr;
};

// Whether snmpd has registered this very place itself. Trying to, as a sub-agent must, would be logged.
bool agentHas(host::OidView root)
{
    const LibraryOid place(root);
    const netsnmp_subtree *tree = netsnmp_subtree_find(place.data(), place.size(), nullptr, "");
    for (; tree != nullptr; tree = tree->children) {
        if (tree->reginfo != nullptr && tree->priority == agentsPriority &&
            snmp_oid_compare(tree->reginfo->rootoid, tree->reginfo->rootoid_len, place.data(), place.size()) == 0) {
            return true;
        }
    }
    return false;
}

class Object
{
  public:
    Object()
        : settings_(fileType, directive, nullptr), routeLimit_(fileType, routesDirective),
          linkSettings_(fileType, linksDirective),
          contextSettings_(fileType, contextDirective, contextsDirective, communityDirective)
    {
        register_config_handler(fileType, platformDirective, takePlatform, nullptr, "NAME[:ARGUMENT]");
        register_config_handler(fileType, optionDirective, takeOption, nullptr, "NAME[=VALUE]");
        snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, configurationRead, this);
        // Loaded by a request, long after the configuration was read, it is not told.
        const timeval soon{0, 1000};
        alarm_ = snmp_alarm_register_hr(
            soon, 0, [](unsigned, void *self) { static_cast<Object *>(self)->start(); }, this);
    }

    ~Object()
    {
        snmp_alarm_unregister(alarm_);
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, configurationRead, this, 1);
        unregister_config_handler(fileType, optionDirective);
        unregister_config_handler(fileType, platformDirective);
    }
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;

    static std::optional<Object> loaded;

  private:
    static std::string trimmed(const std::string &line) { return line.substr(0, line.find_last_not_of(" \t\r\n") + 1); }

    static void takePlatform(const char *, char *line) { loaded->options_.platform = trimmed(line); }

    static void takeOption(const char *, char *line)
    {
        const std::string option = trimmed(line);
        const std::size_t equals = option.find('=');
        loaded->options_.platformOptions.emplace_back(option.substr(0, equals),
                                                      equals == std::string::npos ? "" : option.substr(equals + 1));
    }

    static int configurationRead(int, int, void *, void *self)
    {
        static_cast<Object *>(self)->start();
        return SNMPERR_SUCCESS;
    }

    void start()
    {
        if (started_) {
            if (device_) {
                device_->notifiesOfLinks(linkSettings_.areSent());
            }
            if (contexts_) {
                contexts_->reload();
                contexts_->serve(settings_.notOff(device_->catalogue().tables()));
            }
            return;
        }
        started_ = true;
        try {
            serve();
        } catch (const std::exception &error) {
            snmp_log(LOG_ERR, "ipmib: nothing is served: %s\n", error.what());
        }
    }

    void serve()
    {
        options_.pluginDirectory = symbols_.directory();
        options_.log = logLine;
        load();
        device_.emplace(*plugin_);
        device_->sysUpTime().isNow(netsnmp_get_agent_uptime());
        const std::vector<host::ServedTable> &tables = device_->catalogue().tables();
        for (const std::string &name : settings_.unknownNames(tables)) {
            snmp_log(LOG_ERR, "%s: there is no table \"%s\"\n", directive, name.c_str());
        }
        routeLimit_.handTo(plugin_->platform());
        frontend_.emplace(device_->catalogue(), device_->instances());
        device_->notifiesOfLinks(linkSettings_.areSent());
        linkNotifications_.emplace(plugin_->platform(), device_->instances(), linkSettings_,
                                   [](netsnmp_variable_list &variables, const std::string &context) {
                                       send_v3trap(&variables, context.empty() ? nullptr : context.c_str());
                                   });
        std::vector<Claim> claims;
        std::vector<const host::ServedTable *> all;
        std::vector<const host::ServedTable *> ours;
        for (const host::ServedTable &table : tables) {
            Claim &claim =
                claims.emplace_back(table, settings_.of(table), Claim::WhenOff::leaveAlone, Claim::Groups::oneByOne);
            while (const auto attempt = claim.next()) {
                claim.take(attemptTo(table, *attempt), "snmpd does not register it");
            }
            all.push_back(&table);
            if (claim.isOurs()) {
                ours.push_back(&table);
            }
        }
        snmp_log(LOG_INFO, "ipmib: serving %zu of %zu tables\n", host::countNames(ours), host::countNames(all));
        OwnershipReport("ipmib", directive).log(claims);
        access_.emplace(contextSettings_, ContextAccess::Listing::agents);
        contexts_.emplace(*device_, *frontend_, contextSettings_,
                          Contexts::Beside{.access = &*access_, .links = &*linkNotifications_});
        contexts_->serve(settings_.notOff(device_->catalogue().tables()));
        frontend_->whenPlatformHasWorked([this] { contexts_->follow(); });
    }

    // A mistake in one line of the configuration costs that line alone.
    void load()
    {
        while (!plugin_) {
            try {
                plugin_.emplace(options_);
            } catch (const host::WrongOption &wrong) {
                snmp_log(LOG_ERR, "%s: %s; the line is left aside\n", optionDirective, wrong.what());
                options_.platformOptions.erase(options_.platformOptions.begin() +
                                               static_cast<std::ptrdiff_t>(wrong.place));
            }
        }
    }

    Claim::Answer attemptTo(const host::ServedTable &table, const Claim::Attempt &attempt)
    {
        if (attempt.priority == agentsPriority) {
            return attempt.registering && agentHas(attempt.root) ? Claim::Answer::duplicate : Claim::Answer::granted;
        }
        if (!attempt.registering) {
            frontend_->remove(attempt.root, attempt.priority);
            return Claim::Answer::granted;
        }
        switch (frontend_->add(table, attempt.root, attempt.priority)) {
        case MIB_REGISTERED_OK:
            return Claim::Answer::granted;
        case MIB_DUPLICATE_REGISTRATION:
            return Claim::Answer::duplicate;
        default:
            return Claim::Answer::refused;
        }
    }

    GlobalSymbols symbols_;
    ServeSettings settings_;
    RouteLimit routeLimit_;
    LinkNotificationSettings linkSettings_;
    ContextSettings contextSettings_;
    host::PluginOptions options_;
    unsigned alarm_ = 0;
    bool started_ = false;
    std::optional<host::Plugin> plugin_;
    std::optional<tables::ServedDevice> device_;
    std::optional<Frontend> frontend_;
    std::optional<LinkNotifications> linkNotifications_;
    std::optional<ContextAccess> access_;
    std::optional<Contexts> contexts_;
};

std::optional<Object> Object::loaded;

} // namespace

#pragma GCC visibility push(default)
extern "C" {

void init_ipmib()
{
    try {
        Object::loaded.emplace();
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "ipmib: %s\n", error.what());
    }
}

void deinit_ipmib()
{
    Object::loaded.reset();
}
}
#pragma GCC visibility pop
