// plugin.hpp - a part of a tool in a shared library of its own, hidden but for what is marked here.

#ifndef PLUGIN_HPP
#define PLUGIN_HPP

#include <Optrella/Optrella.hpp>
#include <typeinfo>
#include <vector>

#define PLUGIN_API __attribute__((visibility("default")))

// A kind that the tool and the plugin share, and one that each has for itself.
struct PLUGIN_API SharedKind {
    Optrella::commonDetails common;
};
struct HiddenKind {
    Optrella::commonDetails common;
};

// One parameter of each of the six kinds, with the tag "x", made in the plugin.
PLUGIN_API Optrella::Parameters sixKinds();
PLUGIN_API Optrella::ParameterProtocol sharedKind();
PLUGIN_API Optrella::ParameterProtocol hiddenKind();

// How many of these are of the six kinds, one of each, as the plugin sees it.
PLUGIN_API int countSixKinds(const Optrella::Parameters& parameters);

PLUGIN_API const std::type_info& typeOfText();
PLUGIN_API const std::type_info& typeOfParameter();
PLUGIN_API const void* exitStatusSlot();

// Throws the text.
PLUGIN_API void throwText(const char* text);

// "store --value X": its action leaves the length of X as the exit status.
PLUGIN_API std::vector<Optrella::CommandLinePossibility> commandLines();

#endif
