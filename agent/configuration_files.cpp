// SPDX-License-Identifier: BSD-3-Clause
// Goes through the files as the library does, for the sake of the words by which one file includes others, with as many
// descriptors open at a time.

#include "configuration_files.h"

#include "net_snmp.h"
#include "options.h"
#include "snmp_library.h"

#include "support/named_file.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace ipmib::agent
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t largestFile = 16 << 20;
// The library's own limits, behind which it reads nothing, and says so.
constexpr unsigned deepest = 16;
constexpr unsigned mostFiles = 4096;

std::vector<std::string> foldersOf(const std::string &path)
{
    std::vector<std::string> folders;
    std::istringstream stream(path);
    for (std::string folder; std::getline(stream, folder, ENV_SEPARATOR_CHAR);) {
        std::error_code error;
        if (fs::is_directory(folder, error)) {
            folders.push_back(folder);
        }
    }
    return folders;
}

std::vector<std::string> searchPath()
{
    const char *const path = std::getenv("SNMPCONFPATH");
    std::vector<std::string> folders = foldersOf(path != nullptr ? path : get_configuration_directory());
    for (const std::string &folder : foldersOf(path != nullptr ? "" : get_persistent_directory())) {
        folders.push_back(folder);
    }
    return folders;
}

} // namespace

// One pass over all files.
class ConfigurationFiles::Pass
{
  public:
    void read(const std::string &file, bool mayBeAbsent);
    void readSearched(const std::string &type);

    Obstacles obstacles;

  private:
    void readFolder(const std::string &folder);
    void readLine(const std::string &file, std::string line);

    unsigned depth_ = 0;
    unsigned files_ = 0;
};

void ConfigurationFiles::Pass::read(const std::string &file, bool mayBeAbsent)
{
    if (depth_ > deepest || ++files_ > mostFiles) {
        return;
    }
    const support::NamedFile content = support::readNamedFile(file, largestFile);
    if (content.error != 0) {
        if (content.error != ENOENT || !mayBeAbsent) {
            obstacles.emplace(file, Obstacle{content.reason, content.error == EINVAL || content.error == EFBIG});
        }
        return;
    }
    const int held = open("/", O_PATH | O_CLOEXEC); // the library has the file open while it reads what that includes
    ++depth_;
    std::istringstream lines(content.text);
    for (std::string line; std::getline(lines, line);) {
        readLine(file, std::move(line));
    }
    --depth_;
    close(held);
}

void ConfigurationFiles::Pass::readSearched(const std::string &type)
{
    for (const std::string &folder : searchPath()) {
        read(folder + "/" + type + ".conf", true);
        read(folder + "/" + type + ".local.conf", true);
    }
}

void ConfigurationFiles::Pass::readFolder(const std::string &folder)
{
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (!name.starts_with('.') && name.size() > std::string_view(".conf").size() && name.ends_with(".conf")) {
            read(entry->path(), true);
        }
    }
    if (error) {
        obstacles.emplace(folder, Obstacle{error.message(), false});
    }
}

void ConfigurationFiles::Pass::readLine(const std::string &file, std::string line)
{
    char word[1024];
    const char *text = skip_white(line.data());
    const char *argument = text == nullptr ? nullptr : copy_nword_const(text, word, sizeof word);
    if (argument == nullptr) {
        return;
    }
    const auto isWord = [&word](const char *name) { return strcasecmp(word, name) == 0; };
    if (isWord("includeFile")) {
        read(argument[0] == '/' ? argument : fs::path(file).replace_filename(argument).string(), false);
    } else if (isWord("includeDir")) {
        readFolder(argument);
    } else if (isWord("includeSearch")) {
        const std::string_view name = argument;
        readSearched(std::string(name.substr(0, name.size() - (name.ends_with(".conf") ? 5 : 0))));
    }
}

std::string ConfigurationFiles::textOf(const Obstacles::value_type &obstacle)
{
    return "cannot read the configuration file " + obstacle.first + ": " + obstacle.second.reason;
}

ConfigurationFiles::ConfigurationFiles(std::vector<std::string> named, bool searched)
    : named_(std::move(named)), searched_(searched)
{
}

ConfigurationFiles::Obstacles ConfigurationFiles::obstacles() const
{
    Pass pass;
    for (const std::string &file : named_) {
        pass.read(file, false);
    }
    if (searched_) {
        pass.readSearched("snmp");
        pass.readSearched(SnmpLibrary::applicationName);
    }
    return pass.obstacles;
}

void ConfigurationFiles::begin()
{
    known_ = obstacles();
    for (const std::string &file : named_) {
        if (const auto found = known_.find(file); found != known_.end()) {
            throw std::runtime_error(textOf(*found));
        }
    }
    for (const auto &obstacle : known_) {
        if (obstacle.second.isEndless) {
            throw std::runtime_error(textOf(obstacle));
        }
        snmp_log(LOG_WARNING, "%s, going on without it\n", textOf(obstacle).c_str());
    }
}

void ConfigurationFiles::renew()
{
    Obstacles found = obstacles();
    for (const auto &obstacle : found) {
        if (!known_.contains(obstacle.first)) {
            throw std::runtime_error(textOf(obstacle));
        }
    }
    known_ = std::move(found);
}

} // namespace ipmib::agent
