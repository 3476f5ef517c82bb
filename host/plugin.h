// SPDX-License-Identifier: BSD-3-Clause
// Loads a platform library and a module into this process, as a device's agent does: the platform with global symbols,
// then the module, whose load hooks register its tree and its callback here.
#pragma once

#include "resolver.h"

#include <ipmib/platform_hooks.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ipmib::host
{

// One line for the user: what on the command line is wrong.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One of PluginOptions::platformOptions, by its place, is unknown to the platform or has a wrong value.
struct WrongOption : UsageError {
    WrongOption(const char *line, std::size_t at) : UsageError(line), place(at) {}

    std::size_t place;
};

// One line for the user; it names the library, and the symbol or the setting that is wrong.
struct PluginError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct PluginOptions {
    std::string platform = "linux"; // NAME or NAME:ARGUMENT; a NAME with a slash is the path of a library
    std::string module;             // path of a module; empty for libipmib.so of the plug-in directory
    std::string pluginDirectory;    // where platform_NAME.so and libipmib.so lie
    std::vector<std::pair<std::string, std::string>> platformOptions; // name without dashes, value
    Resolver::Log log = nullptr;
};

class Plugin
{
  public:
    // Starts the platform, so that its mirrors are full, then loads the module. Throws PluginError; where the options
    // are to blame, WrongOption for a single one, and UsageError for the platform's name and argument. A platform and a
    // module are in use once at a time: both keep their state in their libraries.
    explicit Plugin(const PluginOptions &options);
    // Unloads the module, then stops and unloads the platform.
    ~Plugin();
    Plugin(const Plugin &) = delete;
    Plugin &operator=(const Plugin &) = delete;

    Resolver &resolver();
    // The root of the tree that the module describes.
    const MibTreeNode &tree() const;
    // The platform's hooks, or null when it has none.
    const IpmibPlatformHooks *platform() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

// The path of the library of PluginOptions::platform. Throws UsageError with the names of the platforms that there are
// when it has none of them.
std::string platformPath(const PluginOptions &options);

// The plug-in directory of the running program: `relative` seen from the program's own folder.
std::string pluginDirectoryOfProgram(const char *relative);

} // namespace ipmib::host
