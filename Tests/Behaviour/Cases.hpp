// Cases.hpp - reads the parts of a case, and writes texts as observations hold them.
//
// Every part must be there and of its type: a case with a mistake is refused, and never taken for
// another one.

#ifndef OPTRELLA_TESTS_BEHAVIOUR_CASES_HPP
#define OPTRELLA_TESTS_BEHAVIOUR_CASES_HPP

#include <Optrella/Optrella.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Behaviour {

using json = nlohmann::ordered_json;

// What is wrong with a line that is no case.
struct NoCase : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws NoCase when there is no such key.
const json& at(const json& object, const char* key);

// A text is a JSON string, or {"hex": "6162ff"} where its bytes are not UTF-8.
std::string bytes(const json& text);
json text(std::string_view bytes);
json orNull(const std::optional<Optrella::Text>& text);

std::vector<Optrella::Text> texts(const json& list);
bool boolean(const json& value);
Optrella::ParameterProtocol parameter(const json& description);
Optrella::Parameters parameters(const json& descriptions);

}  // namespace Behaviour

#endif
