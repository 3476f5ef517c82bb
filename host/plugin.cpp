// SPDX-License-Identifier: BSD-3-Clause
// Opens the two libraries in the order in which they lean on each other, and closes them in reverse.
#include "plugin.h"

#include "platform_hooks.h"
#include "registry.h"
#include "shared_library.h"

#include <cstring>
#include <filesystem>
#include <optional>
#include <set>

namespace ipmib::host
{
namespace
{

void logNothing(int, const char *) {}

// The platform's work, from start to stop.
class RunningPlatform
{
  public:
    RunningPlatform(const SharedLibrary &library, const PluginOptions &options, std::string argument)
        : argument_(std::move(argument))
    {
        for (const auto &[name, value] : options.platformOptions) {
            options_.push_back({name.c_str(), value.c_str()});
        }
        const void *exported = library.find("ipmib_platform_hooks");
        if (exported == nullptr) {
            if (!argument_.empty() || !options_.empty()) {
                throw UsageError(library.path() + ": this platform takes no argument and no options");
            }
            return;
        }
        try {
            hooks_.emplace(*static_cast<const IpmibPlatformHooks *>(exported));
        } catch (const PluginError &error) {
            throw PluginError(library.path() + ": " + error.what());
        }
        host_ = {options.log ? options.log : logNothing, argument_.c_str(), options_.data(), options_.size()};
        char error[512] = "it does not say why";
        if (const int result = hooks_->get().start(&host_, error, sizeof error); result != 0) {
            error[sizeof error - 1] = '\0';
            throwFailure(library, result, error);
        }
    }
    ~RunningPlatform()
    {
        if (hooks_) {
            hooks_->get().stop();
        }
    }
    RunningPlatform(const RunningPlatform &) = delete;
    RunningPlatform &operator=(const RunningPlatform &) = delete;

    const IpmibPlatformHooks *hooks() const { return hooks_ ? &hooks_->get() : nullptr; }

  private:
    [[noreturn]] void throwFailure(const SharedLibrary &library, int result, const char *line) const
    {
        const std::size_t option = static_cast<std::size_t>(result) - IPMIB_WRONG_OPTION;
        if (result == IPMIB_WRONG_ARGUMENT) {
            throw UsageError(line);
        }
        if (option < options_.size()) {
            throw WrongOption(line, option);
        }
        throw PluginError(library.path() + ": the platform does not start: " + line);
    }

    std::optional<PlatformHooks> hooks_;
    std::string argument_;
    std::vector<IpmibPlatformOption> options_;
    IpmibPlatformHost host_{};
};

std::string platformName(const std::string &platform)
{
    return platform.substr(0, platform.find(':'));
}

constexpr const char *platformPrefix = "platform_";
constexpr const char *platformSuffix = ".so";

std::set<std::string> platformNames(const std::string &directory)
{
    std::set<std::string> names;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(directory, error)) {
        const std::string file = entry.path().filename();
        if (file.starts_with(platformPrefix) && entry.path().extension() == platformSuffix) {
            names.insert(entry.path().stem().string().substr(std::strlen(platformPrefix)));
        }
    }
    return names;
}

std::string joined(const std::set<std::string> &names)
{
    std::string text;
    for (const std::string &name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

std::string platformArgument(const std::string &platform)
{
    const auto colon = platform.find(':');
    return colon == std::string::npos ? "" : platform.substr(colon + 1);
}

std::string modulePath(const PluginOptions &options)
{
    return options.module.empty() ? options.pluginDirectory + "/libipmib.so" : options.module;
}

// The module's library, and what its load hooks have registered.
class LoadedModule
{
  public:
    explicit LoadedModule(const std::string &path)
        : trees_(forgottenProblem().trees().size()), callbacks_(Registry::ofProcess().callbacks().size()),
          library_(path, SharedLibrary::Symbols::local)
    {
        Registry &registry = Registry::ofProcess();
        const std::string problem = registry.takeProblem();
        if (!problem.empty()) {
            throw PluginError(path + ": " + problem);
        }
        if (registry.trees().size() == trees_) {
            throw PluginError(path + ": the library registers no MIB tree, so it is no module");
        }
        if (registry.callbacks().size() == callbacks_) {
            throw PluginError(path + ": the library registers no callback, so it is no module");
        }
    }

    const MibTreeNode &root() const { return *Registry::ofProcess().trees()[trees_].root; }
    MorCallback callback() const { return Registry::ofProcess().callbacks()[callbacks_].callback; }

  private:
    static const Registry &forgottenProblem()
    {
        Registry::ofProcess().takeProblem();
        return Registry::ofProcess();
    }

    std::size_t trees_; // how many there were before
    std::size_t callbacks_;
    SharedLibrary library_;
};

} // namespace

class Plugin::Impl
{
  public:
    explicit Impl(const PluginOptions &options)
        : platformLibrary(platformPath(options), SharedLibrary::Symbols::global),
          platform(platformLibrary, options, platformArgument(options.platform)), module(modulePath(options)),
          resolver(module.root(), module.callback(), options.log)
    {
    }

    SharedLibrary platformLibrary;
    RunningPlatform platform;
    LoadedModule module;
    Resolver resolver;
};

Plugin::Plugin(const PluginOptions &options) : impl_(std::make_unique<Impl>(options)) {}

Plugin::~Plugin() = default;

Resolver &Plugin::resolver()
{
    return impl_->resolver;
}

const MibTreeNode &Plugin::tree() const
{
    return impl_->module.root();
}

const IpmibPlatformHooks *Plugin::platform() const
{
    return impl_->platform.hooks();
}

std::string platformPath(const PluginOptions &options)
{
    const std::string name = platformName(options.platform);
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const std::set<std::string> names = platformNames(options.pluginDirectory);
    if (!names.empty() && !names.contains(name)) {
        throw UsageError("there is no platform \"" + name + "\"; there are: " + joined(names));
    }
    return options.pluginDirectory + "/" + platformPrefix + name + platformSuffix;
}

std::string pluginDirectoryOfProgram(const char *relative)
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / relative).lexically_normal().string();
}

} // namespace ipmib::host
