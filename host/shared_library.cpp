// SPDX-License-Identifier: BSD-3-Clause
// dlopen with an error line that always names the library.
#include "shared_library.h"

#include "contract.h"
#include "plugin.h"

#include <dlfcn.h>

#include <filesystem>
#include <utility>

namespace ipmib::host
{

SharedLibrary::SharedLibrary(std::string path, Symbols symbols) : path_(std::move(path))
{
    // Without a slash, dlopen would search the system's directories.
    const std::string file = path_.find('/') == std::string::npos ? "./" + path_ : path_;
    std::error_code error;
    if (std::filesystem::is_fifo(file, error)) {
        throw PluginError(path_ + ": it is a pipe"); // dlopen would wait for somebody to write it
    }
    requireContract(file);
    handle_ = dlopen(file.c_str(), RTLD_NOW | (symbols == Symbols::global ? RTLD_GLOBAL : RTLD_LOCAL));
    if (!handle_) {
        const char *reason = dlerror();
        const std::string line = reason ? reason : "the library does not load";
        throw PluginError(line.find(path_) == std::string::npos ? path_ + ": " + line : line);
    }
}

SharedLibrary::~SharedLibrary()
{
    dlclose(handle_);
}

const void *SharedLibrary::find(const char *symbol) const
{
    return dlsym(handle_, symbol);
}

} // namespace ipmib::host
