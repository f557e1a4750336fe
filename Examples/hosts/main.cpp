// hosts - looks after a hosts file.

#include <sysexits.h>

#include <Optrella/Optrella.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HostsFile.hpp"

using namespace Optrella;

namespace {

// ---- What may stand on a command line ----

using urlType = ParameterFileURL::urlType;
using existState = ParameterFileURL::existState;

constexpr ParameterNone help{{"help", "--help"}, ""};
constexpr ParameterNone list{{"list"}, ""};
constexpr ParameterNone check{{"check"}, ""};
constexpr ParameterString lookUpName{{"look-up"}, "name", "Host name to look up"};
constexpr ParameterString addAddress{{"add"}, "address", "IPv4 or IPv6 address"};
constexpr ParameterString removeName{{"remove"}, "name", "Host name to remove"};
constexpr ParameterFileURL exportPath{
    {"export"}, urlType::file, existState::absent, "copy", "New file, which must not exist yet"};
constexpr ParameterFileURL installPath{
    {"install"}, urlType::file, existState::exist, "prepared", "File with the new content"};

constexpr ParameterNone byAddress{{"address"}, ""};
constexpr ParameterNone byName{{"name"}, ""};
constexpr ParameterNone orders[] = {byAddress, byName};
constexpr ParameterList sort{{"-s", "--sort"}, orders, "order", "Order of the entries"};
constexpr ParameterNumber limit{
    {"-l", "--limit"}, "count", 1, 10000, "Show at most so many entries"};
constexpr ParameterString newName{{"-n", "--name"}, "name", "Host name; may be repeated"};
constexpr ParameterFileURL hostsFile{{"-f", "--file"},
                                     urlType::file,
                                     existState::exist,
                                     "path",
                                     "Hosts file to use instead of /etc/hosts"};

// ---- What the commands do. Each returns the status with which the tool ends. ----

int fail(const Text& message, int status = EXIT_FAILURE) {
    outputErrorMessage(message);
    return status;
}

int print(const std::string& text) {
    const bool isTaken = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    const bool isPrinted = std::fflush(stdout) == 0 && isTaken;
    return isPrinted ? EXIT_SUCCESS : fail("Cannot write to standard output");
}

// One line for each entry, the names in a column.
std::string table(const std::vector<Entry>& entries) {
    std::size_t width = 0;
    for (const Entry& entry : entries) width = std::max(width, entry.address.size());
    std::string text;
    for (const Entry& entry : entries) {
        text += entry.address + std::string(width - entry.address.size() + 1, ' ');
        for (const std::string& name : entry.names) text += " " + name;
        text += "\n";
    }
    return text;
}

// The library passes every number on, and -1 for a text that is none.
bool isWithinLimit(std::int64_t count) {
    return limit.rangeMin() <= count && count <= limit.rangeMax();
}

std::string notWithinLimit() {
    const std::string least = std::to_string(limit.rangeMin().value());
    const std::string most = std::to_string(limit.rangeMax().value());
    return "The count must be a number from " + least + " to " + most;
}

int listEntries(const std::string& path, const std::optional<ParameterNone>& order,
                std::optional<std::int64_t> most) {
    if (most && !isWithinLimit(*most)) return fail(notWithinLimit(), EX_USAGE);
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);

    std::vector<Entry> entries = hosts.entries();
    if (order == byAddress) sortByAddress(entries);
    if (order == byName) sortByName(entries);
    if (most && std::cmp_greater(entries.size(), *most)) {
        entries.resize(static_cast<std::size_t>(*most));
    }
    return print(table(entries));
}

int showAddresses(const std::string& path, const std::string& name) {
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);

    const std::vector<std::string> addresses = hosts.addressesOf(name);
    if (addresses.empty()) return fail(name + " is not in " + path);
    std::string text;
    for (const std::string& address : addresses) text += address + "\n";
    return print(text);
}

int addEntry(const std::string& path, const Entry& entry) {
    if (!isAddress(entry.address)) return fail(entry.address + " is not an address", EX_USAGE);
    if (entry.names.empty()) return fail("An address needs a --name", EX_USAGE);
    for (const std::string& name : entry.names) {
        if (!isHostName(name)) return fail(name + " is not a host name", EX_USAGE);
    }
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);
    for (const std::string& name : entry.names) {
        if (hosts.has(entry.address, name)) {
            return fail(entry.address + " has the name " + name + " already");
        }
    }
    hosts.add(entry);
    if (const Problem problem = hosts.save()) return fail(*problem);
    return EXIT_SUCCESS;
}

int removeFromEntries(const std::string& path, const std::string& name) {
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);
    if (!hosts.remove(name)) return fail(name + " is not in " + path);
    if (const Problem problem = hosts.save()) return fail(*problem);
    return EXIT_SUCCESS;
}

int exportCopy(const std::string& path, const std::string& copy) {
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);
    if (const Problem problem = hosts.saveCopy(copy)) return fail(*problem);
    return EXIT_SUCCESS;
}

int checkFile(const std::string& path) {
    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return fail(*problem);
    int status = EXIT_SUCCESS;
    for (const std::string& mistake : hosts.mistakes()) status = fail(mistake);
    return status;
}

// When the tool has been started again as root, the first line of its output is lost, and so is its
// status: the reason stands on the second line, and all of it is written at once.
int failToInstall(const std::string& reason) { return fail("Nothing was installed:\n" + reason); }

int install(const std::string& path, const std::string& preparedPath) {
    HostsFile prepared;
    if (const Problem problem = prepared.load(preparedPath)) return failToInstall(*problem);
    if (!prepared.mistakes().empty()) return failToInstall(prepared.mistakes().front());

    HostsFile hosts;
    if (const Problem problem = hosts.load(path)) return failToInstall(*problem);
    hosts.takeLinesOf(prepared);
    if (const Problem problem = hosts.save()) return failToInstall(*problem);
    const std::string count = std::to_string(hosts.entries().size());
    return print("Installed " + preparedPath + "\n" + path + " has " + count + " entries now\n");
}

int showHelp();  // defined after the list that it shows

// ---- The command lines: every action fetches its values and leaves the status ----

std::string pathOf(const Parameters& given) {
    const std::optional<FileURL> file = fetchOptionalURL(hostsFile, given);
    return file ? file->path().str() : "/etc/hosts";
}

// A fetch operation would give the first name alone.
std::vector<std::string> newNames(const Parameters& given) {
    std::vector<std::string> names;
    for (const ParameterProtocol& parameter : given) {
        if (parameter.isEqualTo(newName)) names.push_back(parameter.common().userValue.str());
    }
    return names;
}

void endWith(int status) { CommandLineExitStatus::shared().exitStatus = status; }

constinit const CommandLinePossibility commandLines[] = {
    {/* requiresRoot */ false,
     {list},
     {sort, limit, hostsFile},
     "List the entries.",
     /* hidden */ false,
     [](const Parameters& given) {
         endWith(listEntries(pathOf(given), fetchOptionalListOption(sort, given),
                             fetchOptionalNumber(limit, given)));
     }},
    {false,
     {lookUpName},
     {hostsFile},
     "Show the addresses of a host name.",
     false,
     [](const Parameters& given) {
         endWith(showAddresses(pathOf(given), fetchString(lookUpName, given).str()));
     }},
    // A required parameter cannot be repeated, so a name, too, is an optional one.
    {false,
     {addAddress},
     {newName, hostsFile},
     "Add an entry. Give at least one name.",
     false,
     [](const Parameters& given) {
         endWith(addEntry(pathOf(given), {fetchString(addAddress, given).str(), newNames(given)}));
     }},
    {false,
     {removeName},
     {hostsFile},
     "Remove a host name from all entries.",
     false,
     [](const Parameters& given) {
         endWith(removeFromEntries(pathOf(given), fetchString(removeName, given).str()));
     }},
    {false,
     {exportPath},
     {hostsFile},
     "Write a copy of the hosts file.",
     false,
     [](const Parameters& given) {
         endWith(exportCopy(pathOf(given), fetchURL(exportPath, given).path().str()));
     }},
    {true,
     {installPath},
     {hostsFile},
     "Replace the hosts file by a prepared one.",
     false,
     [](const Parameters& given) {
         endWith(install(pathOf(given), fetchURL(installPath, given).path().str()));
     }},
    {false,
     {check},
     {hostsFile},
     "Say what is wrong with the hosts file, for scripts.",
     true,
     [](const Parameters& given) { endWith(checkFile(pathOf(given))); }},
    {false, {help}, {}, "Show this list.", false, [](const Parameters&) { endWith(showHelp()); }},
};

int showHelp() {
    displayHelp(commandLines);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (parse(commandLines, argc, argv) != parsingError::NoError) {
        displayHelp(commandLines);
        return EX_USAGE;
    }
    return CommandLineExitStatus::shared().exitStatus;
}
