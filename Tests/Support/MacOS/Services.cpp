#include "Services.hpp"

#include <OpenDirectory/OpenDirectory.h>
#include <crt_externs.h>
#include <libproc.h>
#include <mach-o/dyld.h>
#include <os/log.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace Tests {

Services& services() {
    static Services& services = *new Services();  // asked until the process ends
    return services;
}

}  // namespace Tests

// ---- What the services share ----

namespace {

using Tests::given;
using Tests::Identity;
using Tests::services;

// Records the call. False when it is to fail.
bool isCalled(const std::string& name, const std::string& arguments) {
    std::vector<std::string>& calls = services().calls;
    calls.push_back(arguments.empty() ? name : name + ' ' + arguments);
    const auto count = std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
        return call == name || call.starts_with(name + ' ');
    });
    const std::string& failing = services().failing;
    return failing != name && failing != name + ' ' + std::to_string(count);
}

std::string textOf(CFStringRef string) {
    if (string == nullptr) return "null";
    char text[1024];
    const Boolean fits = CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8);
    return fits ? text : "too long";
}

CFStringRef newString(const std::string& text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

std::string orNull(const void* pointer, const char* otherwise) {
    return pointer == nullptr ? "null" : otherwise;
}

std::string isDefault(CFAllocatorRef allocator) {
    return allocator == kCFAllocatorDefault ? "default" : "other";
}

// What an object of a service's stands for; each is an object of Core Foundation's own.
template <class Reference>
Reference newObject(const std::string& name) {
    const auto* bytes = reinterpret_cast<const UInt8*>(name.data());
    const CFDataRef data =
        CFDataCreate(kCFAllocatorDefault, bytes, static_cast<CFIndex>(name.size()));
    return given(reinterpret_cast<Reference>(const_cast<void*>(static_cast<const void*>(data))));
}

std::string nameOf(const void* object) {
    const auto* data = static_cast<CFDataRef>(object);
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
            static_cast<std::size_t>(CFDataGetLength(data))};
}

}  // namespace

// ---- Open Directory ----

namespace {

CFStringRef typeOfUsers() {
    static const CFStringRef type = newString("dsRecTypeStandard:Users");
    return type;
}

}  // namespace

extern "C" {

extern const ODRecordType kODRecordTypeUsers;
const ODRecordType kODRecordTypeUsers = typeOfUsers();

ODSessionRef ODSessionCreate(CFAllocatorRef allocator, CFDictionaryRef options, CFErrorRef* error) {
    if (!isCalled("ODSessionCreate", isDefault(allocator) + ' ' + orNull(options, "options") + ' ' +
                                         orNull(error, "error"))) {
        return nullptr;
    }
    return newObject<ODSessionRef>("session");
}

ODNodeRef ODNodeCreateWithNodeType(CFAllocatorRef allocator, ODSessionRef session, ODNodeType type,
                                   CFErrorRef* error) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%x", type);
    if (!isCalled("ODNodeCreateWithNodeType", isDefault(allocator) + ' ' + nameOf(session) + ' ' +
                                                  number + ' ' + orNull(error, "error"))) {
        return nullptr;
    }
    return newObject<ODNodeRef>("node");
}

ODRecordRef ODNodeCopyRecord(ODNodeRef node, ODRecordType type, CFStringRef name,
                             CFTypeRef attributes, CFErrorRef* error) {
    if (!isCalled("ODNodeCopyRecord", nameOf(node) + ' ' + textOf(type) + ' ' + textOf(name) + ' ' +
                                          orNull(attributes, "attributes") + ' ' +
                                          orNull(error, "error"))) {
        return nullptr;
    }
    if (!services().passwords.contains(textOf(name))) return nullptr;
    return newObject<ODRecordRef>("record of " + textOf(name));
}

bool ODRecordVerifyPassword(ODRecordRef record, CFStringRef password, CFErrorRef* error) {
    if (services().verify) return services().verify(password);
    if (!isCalled("ODRecordVerifyPassword",
                  nameOf(record) + ' ' + textOf(password) + ' ' + orNull(error, "error"))) {
        return false;
    }
    const std::string user = nameOf(record).substr(std::strlen("record of "));
    return services().passwords[user] == textOf(password);
}
}

// ---- Identity Services ----

namespace {

// What a query object stands for, and how often it has run.
struct Query {
    std::string text;
    int runs = 0;
    bool findsHidden = false;
};

std::map<const void*, Query>& queries() {
    static auto& queries = *new std::map<const void*, Query>();
    return queries;
}

CSIdentityAuthorityRef defaultAuthority() {
    static char authority;
    return reinterpret_cast<CSIdentityAuthorityRef>(&authority);
}

std::string nameOf(CSIdentityAuthorityRef authority) {
    return authority == defaultAuthority() ? "default authority" : "other authority";
}

std::string nameOf(CSIdentityClass kind) { return kind == kCSIdentityClassUser ? "user" : "group"; }

CSIdentityQueryRef newQuery(const std::string& text) {
    const auto query = newObject<CSIdentityQueryRef>(text);
    queries()[query] = Query{text};
    return query;
}

// The objects of the identities live on: the library may not release what it did not get.
CSIdentityRef objectOf(const std::string& text) {
    static auto& objects = *new std::map<std::string, CSIdentityRef>();
    CSIdentityRef& object = objects[text];
    if (object == nullptr) {
        object = newObject<CSIdentityRef>(text);
        Tests::count(object, -1);
    }
    return object;
}

bool isFound(const Query& query, const std::string& kind, const Identity& identity) {
    if (identity.isHidden && !query.findsHidden) return false;
    return query.text == kind + " named " + identity.logInName ||
           query.text == kind + " named " + identity.fullName ||
           query.text == kind + " with number " + std::to_string(identity.id);
}

const Identity& identityOf(CSIdentityRef object) {
    const std::string text = nameOf(static_cast<const void*>(object));
    for (const auto* identities : {&services().users, &services().groups}) {
        const char* kind = identities == &services().users ? "user " : "group ";
        for (const Identity& each : *identities) {
            if (text == kind + each.logInName) return each;
        }
    }
    ADD_FAILURE() << "no identity: " << text;
    static const Identity none;
    return none;
}

}  // namespace

extern "C" {

CSIdentityAuthorityRef CSGetDefaultIdentityAuthority(void) { return defaultAuthority(); }

CSIdentityQueryRef CSIdentityQueryCreateForName(CFAllocatorRef allocator, CFStringRef name,
                                                CSIdentityQueryStringComparisonMethod method,
                                                CSIdentityClass kind,
                                                CSIdentityAuthorityRef authority) {
    const char* how = method == kCSIdentityQueryStringEquals ? "equals" : "begins";
    if (!isCalled("CSIdentityQueryCreateForName", isDefault(allocator) + ' ' + textOf(name) + ' ' +
                                                      how + ' ' + nameOf(kind) + ' ' +
                                                      nameOf(authority))) {
        return nullptr;
    }
    return newQuery(nameOf(kind) + " named " + textOf(name));
}

CSIdentityQueryRef CSIdentityQueryCreateForPosixID(CFAllocatorRef allocator, id_t id,
                                                   CSIdentityClass kind,
                                                   CSIdentityAuthorityRef authority) {
    if (!isCalled("CSIdentityQueryCreateForPosixID", isDefault(allocator) + ' ' +
                                                         std::to_string(id) + ' ' + nameOf(kind) +
                                                         ' ' + nameOf(authority))) {
        return nullptr;
    }
    return newQuery(nameOf(kind) + " with number " + std::to_string(id));
}

Boolean CSIdentityQueryExecute(CSIdentityQueryRef object, CSIdentityQueryFlags flags,
                               CFErrorRef* error) {
    Query& query = queries()[object];
    if (!isCalled("CSIdentityQueryExecute",
                  query.text + ' ' + std::to_string(flags) + ' ' + orNull(error, "error"))) {
        return false;
    }
    EXPECT_EQ(++query.runs, 1) << "a query runs once";
    query.findsHidden = (flags & kCSIdentityQueryIncludeHiddenIdentities) != 0;
    return true;
}

CFArrayRef CSIdentityQueryCopyResults(CSIdentityQueryRef object) {
    const Query query = queries()[object];
    if (!isCalled("CSIdentityQueryCopyResults", query.text)) return nullptr;
    EXPECT_EQ(query.runs, 1) << "only a query that has run has results";
    std::vector<const void*> found;
    for (const Identity& each : services().users) {
        if (isFound(query, "user", each)) found.push_back(objectOf("user " + each.logInName));
    }
    for (const Identity& each : services().groups) {
        if (isFound(query, "group", each)) found.push_back(objectOf("group " + each.logInName));
    }
    return given(CFArrayCreate(kCFAllocatorDefault, found.data(),
                               static_cast<CFIndex>(found.size()), &kCFTypeArrayCallBacks));
}

void CSIdentityQueryStop(CSIdentityQueryRef object) {
    // One that has been released already would be read here.
    static_cast<void>(isCalled("CSIdentityQueryStop", nameOf(static_cast<const void*>(object))));
}

CFStringRef CSIdentityGetPosixName(CSIdentityRef identity) {
    if (!isCalled("CSIdentityGetPosixName", nameOf(static_cast<const void*>(identity)))) {
        return nullptr;
    }
    static auto& names = *new std::map<std::string, CFStringRef>();
    CFStringRef& name = names[identityOf(identity).logInName];
    if (name == nullptr) name = newString(identityOf(identity).logInName);
    return name;
}

Boolean CSIdentityIsMemberOfGroup(CSIdentityRef identity, CSIdentityRef group) {
    if (!isCalled("CSIdentityIsMemberOfGroup", nameOf(static_cast<const void*>(identity)) + " of " +
                                                   nameOf(static_cast<const void*>(group)))) {
        return false;
    }
    return identityOf(identity).groups.contains(identityOf(group).logInName);
}
}

// ---- The log ----

namespace {

// What the buffer says of the arguments. Two bytes stand at its beginning, a summary and the number
// of arguments; each argument has a byte for its kind and its privacy, one for its size, and
// itself.
std::string argumentsIn(const std::uint8_t* buffer, std::size_t size) {
    constexpr unsigned string = 2;
    std::string text;
    std::size_t at = 2;
    for (int left = buffer[1]; left > 0; --left) {
        const unsigned privacy = buffer[at] & 0xfU;
        const unsigned kind = buffer[at] >> 4U;
        EXPECT_EQ(kind, string);
        EXPECT_EQ(buffer[at + 1], sizeof(char*));
        const char* value = nullptr;
        std::memcpy(&value, buffer + at + 2, sizeof value);
        const char* const privacies[] = {"by default", "private", "public"};
        text += std::string(", ") + privacies[privacy] + " \"" + value + '"';
        at += 2 + sizeof value;
    }
    EXPECT_EQ(at, size);
    return text;
}

}  // namespace

extern "C" {

os_log_t os_log_create(const char* subsystem, const char* category) {
    static_cast<void>(isCalled("os_log_create", std::string(subsystem) + ' ' + category));
    static char log;
    return reinterpret_cast<os_log_t>(&log);
}

bool os_log_type_enabled(os_log_t log, os_log_type_t type) {
    static_cast<void>(
        isCalled("os_log_type_enabled", orNull(log, "log") + ' ' + std::to_string(type)));
    return services().isInfoWanted;
}

void _os_log_impl(void*, os_log_t log, os_log_type_t type, const char* format, uint8_t* buffer,
                  uint32_t size) {
    static_cast<void>(isCalled("os_log", orNull(log, "log") + ' ' + std::to_string(type) + " \"" +
                                             format + '"' + argumentsIn(buffer, size)));
}
}

// ---- The start of the process ----

namespace {

int argumentCount = 0;
char** argumentArray = nullptr;

[[gnu::constructor(101)]] void keepArguments(int count, char** arguments, char**) {
    argumentCount = count;
    argumentArray = arguments;
}

}  // namespace

extern "C" {
char*** _NSGetArgv(void) { return &argumentArray; }
int* _NSGetArgc(void) { return &argumentCount; }
char*** _NSGetEnviron(void) { return &environ; }

int _NSGetExecutablePath(char* path, uint32_t* size) {
    const std::string& started = Tests::services().programStarted;
    const bool fits = started.size() < *size;
    if (fits) std::memcpy(path, started.c_str(), started.size() + 1);
    *size = static_cast<uint32_t>(started.size() + 1);
    return fits ? 0 : -1;
}

int proc_pidpath(int pid, void* path, uint32_t size) {
    const std::string& file = Tests::services().programFile;
    if (pid != ::getpid() || file.size() > size) return 0;
    std::memcpy(path, file.data(), file.size());
    return static_cast<int>(file.size());
}
}
