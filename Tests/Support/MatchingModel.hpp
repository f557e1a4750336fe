// MatchingModel.hpp - what parse does with its arguments, by a plain model of the rules: whole
// lists are searched, a parameter waits for its value, and nothing is shared.

#ifndef OPTRELLA_TESTS_SUPPORT_MATCHINGMODEL_HPP
#define OPTRELLA_TESTS_SUPPORT_MATCHINGMODEL_HPP

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Support/Declarations.hpp"

namespace Tests {

// Whether both are one text; other tests check that.
[[nodiscard]] bool isSameText(const std::string& left, const std::string& right);

struct Given {
    const ParameterCase* parameter;
    std::string value;
};

struct Fit {
    std::size_t command;
    std::vector<Given> required;
    std::vector<Given> optional;

    [[nodiscard]] std::vector<Given> all() const;
};

// What is seen from outside while arguments are matched.
struct Seen {
    std::string printed;
    std::vector<std::string> stored;  // by tools' own kinds
};

// Whether the command of this number can run. Of `commands`, which must stay where they are.
[[nodiscard]] std::optional<Fit> fitted(const std::vector<CommandCase>& commands,
                                        std::size_t number,
                                        const std::vector<std::string>& arguments, Seen& seen);

struct Outcome {
    Optrella::parsingError result = Optrella::parsingError::NoMatchingLine;
    Seen seen;
    std::optional<Fit> run;
};

// Of a whole command line, with the name of the program, on the fake platform as it stands.
[[nodiscard]] Outcome expected(const std::vector<CommandCase>& commands,
                               const std::vector<std::string>& line);

// Whether the list holds these parameters, as declared, with their values.
[[nodiscard]] bool areGiven(const Optrella::Parameters& list, const std::vector<Given>& given);

// What the model of a kind is told.
[[nodiscard]] KindFields fieldsOf(const ParameterCase& parameter);

// A platform with drawn rights of the user, who never knows the password.
void setUpPlatform(Input& input);

}  // namespace Tests

#endif
