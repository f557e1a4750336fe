#include "Commands.hpp"

#include <sysexits.h>

#include <Optrella/Optrella.hpp>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "Store.hpp"

using namespace Optrella;

namespace {

// ---- What can be typed ----

constexpr ParameterNone list{{"list"}, ""};
constexpr ParameterNone show{{"show"}, ""};
constexpr ParameterNone open{{"open"}, ""};
constexpr ParameterNone close{{"close"}, ""};
constexpr ParameterNone rename{{"rename"}, ""};
constexpr ParameterNone lock{{"lock"}, ""};
constexpr ParameterNone unlock{{"unlock"}, ""};
constexpr ParameterNone label{{"label"}, ""};
constexpr ParameterNone priority{{"priority"}, ""};
constexpr ParameterNone idle{{"idle"}, ""};
constexpr ParameterNone run{{"run"}, ""};
constexpr ParameterNone exporting{{"export"}, ""};
constexpr ParameterNone importing{{"import"}, ""};
constexpr ParameterNone purge{{"purge"}, ""};
constexpr ParameterNone dump{{"dump"}, ""};

constexpr ParameterString session{{"--session"}, "session", "Name of the session"};
constexpr ParameterString sessions{{"--sessions"}, "session", "Names of sessions"};
constexpr ParameterString newName{{"--new-name"}, "new-name", "What it is called from now on"};
constexpr ParameterString labels{{"--labels"}, "label", "Labels that it gets"};
constexpr ParameterNumber level{{"--level"}, "level", -20, 19, "Its priority; less comes first"};
constexpr ParameterString command{{"--command"}, "command", "A command and its arguments"};
constexpr ParameterFileURL backup{{"--backup"},
                                  ParameterFileURL::urlType::file,
                                  ParameterFileURL::existState::absent,
                                  "file",
                                  "The file to make"};
constexpr ParameterFileURL source{{"--source"},
                                  ParameterFileURL::urlType::file,
                                  ParameterFileURL::existState::exist,
                                  "file",
                                  "A file that export has made"};

constexpr ParameterNone orders[] = {{{"name"}, "From a to z"},
                                    {{"priority"}, "The most urgent first"},
                                    {{"idle"}, "The longest idle first"}};
constexpr ParameterNone states[] = {{{"active"}, "Somebody works in it"},
                                    {{"locked"}, "It waits for its user"}};
constexpr ParameterList order{{"-s", "--sort"}, orders, "order", "Order of the list"};
constexpr ParameterList state{{"--state"}, states, "state", "Only sessions in this state"};
constexpr ParameterNumber limit{{"-n", "--limit"}, "count", 1, 1000, "Show at most so many"};
constexpr ParameterNone isLong{{"-l", "--long"}, "Show all that is known"};
constexpr ParameterString with{{"-w", "--with"}, "label", "Only with this label"};
constexpr ParameterString labelled{{"-L", "--label"}, "label", "Gives it a label"};
constexpr ParameterNumber level0{{"-p", "--priority"}, "level", -20, 19, "Its priority, else 0"};
constexpr ParameterNone force{{"-f", "--force"}, "Also those that are locked"};
constexpr ParameterNumber days{{"--older-than"}, "days", 1, 3650, "Idle for longer, else 30"};

// ---- Actions ----

void fail(const std::string& name, const char* why) {
    outputErrorMessage("sessions: " + name + " " + why);
    CommandLineExitStatus::shared().exitStatus = EX_DATAERR;
}

void save(const Store& store, const std::string& path = "sessions.txt") {
    if (!store.save(path)) fail(path, "cannot be written");
}

// Changes one session.
template <class Change>
void change(const Parameters& given, Change change) {
    Store store;
    const std::string name = fetchString(session, given).str();
    const auto found = store.sessions.find(name);
    if (found == store.sessions.end()) return fail(name, "does not exist");
    change(found->second);
    save(store);
}

using Entry = std::pair<const std::string, Session>;
using Entries = std::vector<const Entry*>;

bool isListed(const Session& each, const Parameters& given) {
    const auto wanted = fetchOptionalListOption(state, given);
    if (wanted && wanted->firstTag() != each.state) return false;
    const auto needed = fetchAllStrings(with, given);
    return std::all_of(needed.begin(), needed.end(),
                       [&each](const Text& one) { return each.labels.contains(one.str()); });
}

void print(const Entry& entry, bool isAll) {
    const auto& [name, one] = entry;
    std::printf("%s", name.c_str());
    if (isAll) {
        std::printf("  %s  %lld  %lld days", one.state.c_str(), one.priority, one.idleDays);
        for (const std::string& each : one.labels) std::printf("  %s", each.c_str());
    }
    std::printf("\n");
}

void listSessions(const Parameters& given) {
    const Store store;
    Entries entries;
    for (const Entry& each : store.sessions) {
        if (isListed(each.second, given)) entries.push_back(&each);
    }
    const auto chosen = fetchOptionalListOption(order, given);
    const Text by = chosen ? chosen->firstTag() : Text("name");
    std::stable_sort(entries.begin(), entries.end(), [&by](const Entry* left, const Entry* right) {
        if (by == "priority") return left->second.priority < right->second.priority;
        return by == "idle" && left->second.idleDays > right->second.idleDays;
    });
    const auto most = static_cast<std::size_t>(fetchOptionalNumber(limit, given).value_or(1000));
    entries.resize(std::min(entries.size(), most));
    for (const Entry* each : entries) print(*each, hasOptional(isLong, given));
}

void showSessions(const Parameters& given) {
    const Store store;
    for (const Text& name : fetchAllStrings(sessions, given)) {
        const auto found = store.sessions.find(name.str());
        if (found == store.sessions.end()) {
            fail(name.str(), "does not exist");
        } else {
            print(*found, true);
        }
    }
}

void openSession(const Parameters& given) {
    Store store;
    const std::string name = fetchString(session, given).str();
    Session made;
    made.priority = fetchOptionalNumber(level0, given).value_or(0);
    for (const Text& each : fetchAllStrings(labelled, given)) made.labels.insert(each.str());
    if (!store.sessions.emplace(name, made).second) return fail(name, "exists");
    save(store);
}

void closeSessions(const Parameters& given) {
    Store store;
    for (const Text& name : fetchAllStrings(sessions, given)) {
        const auto found = store.sessions.find(name.str());
        if (found == store.sessions.end()) {
            fail(name.str(), "does not exist");
        } else if (found->second.state == "locked" && !hasOptional(force, given)) {
            fail(name.str(), "is locked");
        } else {
            store.sessions.erase(found);
        }
    }
    save(store);
}

void renameSession(const Parameters& given) {
    Store store;
    auto node = store.sessions.extract(fetchString(session, given).str());
    if (node.empty()) return fail(fetchString(session, given).str(), "does not exist");
    node.key() = fetchString(newName, given).str();
    if (!store.sessions.insert(std::move(node)).inserted) {
        return fail(fetchString(newName, given).str(), "exists");
    }
    save(store);
}

// Without names, all of them.
void lockSessions(const Parameters& given) {
    Store store;
    std::vector<Text> names = fetchAllStrings(sessions, given);
    if (names.empty()) {
        for (const Entry& each : store.sessions) names.emplace_back(each.first);
    }
    for (const Text& name : names) {
        const auto found = store.sessions.find(name.str());
        if (found == store.sessions.end()) {
            fail(name.str(), "does not exist");
        } else {
            found->second.state = "locked";
        }
    }
    save(store);
}

void runInSession(const Parameters& given) {
    std::printf("in %s:", fetchString(session, given).c_str());
    for (const Text& each : fetchAllStrings(command, given)) std::printf(" %s", each.c_str());
    std::printf("\n");
}

void purgeSessions(const Parameters& given) {
    Store store;
    const long long most = fetchOptionalNumber(days, given).value_or(30);
    const auto count = std::erase_if(
        store.sessions, [most](const Entry& each) { return each.second.idleDays > most; });
    std::printf("%zu removed\n", count);
    save(store);
}

// ---- Words for completion ----

std::vector<std::string> namesOfSessions() {
    std::vector<std::string> names;
    for (const Entry& each : Store().sessions) names.push_back(each.first);
    return names;
}

std::set<std::string> labelsInUse() {
    std::set<std::string> all;
    for (const Entry& each : Store().sessions) {
        all.insert(each.second.labels.begin(), each.second.labels.end());
    }
    return all;
}

// ---- The declarations ----

constinit const CommandLinePossibility commandLines[] = {
    {false, {list}, {order, state, with, limit, isLong}, "List sessions.", false, listSessions},
    {false, {show, sessions}, {}, "Show all that is known of sessions.", false, showSessions},
    {false, {open, session}, {level0, labelled}, "Open a session.", false, openSession},
    {false, {close, sessions}, {force}, "Close sessions.", false, closeSessions},
    {false, {rename, session, newName}, {}, "Give a session another name.", false, renameSession},
    {false, {lock}, {sessions}, "Lock sessions, all of them without a name.", false, lockSessions},
    {false,
     {unlock, session},
     {},
     "Unlock a session.",
     false,
     [](const Parameters& given) { change(given, [](Session& one) { one.state = "active"; }); }},
    {false,
     {label, session, labels},
     {},
     "Add labels to a session.",
     false,
     [](const Parameters& given) {
         change(given, [&given](Session& one) {
             for (const Text& each : fetchAllStrings(labels, given)) one.labels.insert(each.str());
         });
     }},
    {false,
     {priority, session, level},
     {},
     "Change the priority of a session.",
     false,
     [](const Parameters& given) {
         change(given, [&given](Session& one) { one.priority = fetchNumber(level, given); });
     }},
    {false,
     {idle, session, days},
     {},
     "Say how long nobody has been there.",
     /* hidden */ true,
     [](const Parameters& given) {
         change(given, [&given](Session& one) { one.idleDays = fetchNumber(days, given); });
     }},
    {false, {run, session, command}, {}, "Run a command in a session.", false, runInSession},
    {false,
     {exporting, backup},
     {},
     "Write all sessions to a file.",
     false,
     [](const Parameters& given) { save(Store(), fetchURL(backup, given).path().str()); }},
    {false,
     {importing, source},
     {},
     "Read sessions from a file.",
     false,
     [](const Parameters& given) { save(Store(fetchURL(source, given).path().str())); }},
    {/* requiresRoot */ true, {purge}, {days}, "Remove idle sessions.", false, purgeSessions},
    {false,
     {dump},
     {},
     "Print the file as it is.",
     /* hidden */ true,
     [](const Parameters&) {
         for (const Entry& each : Store().sessions) print(each, true);
     }},
};

}  // namespace

Tool sessionsTool() {
    return {
        .name = "sessions",
        .version = "1.0",
        .summary = "Keep the sessions of this machine.",
        .commandLines = commandLines,
        .operands = {session,
                     newName,
                     level,
                     backup,
                     source,
                     {labels, Takes::many},
                     {sessions, Takes::many},
                     {command, Takes::rest}},
        .repeated = {with, labelled},
        .completers = {{session, namesOfSessions},
                       {sessions, namesOfSessions},
                       {with, labelsInUse},
                       {labels, labelsInUse}},
    };
}
