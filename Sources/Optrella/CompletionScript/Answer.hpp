// Answer.hpp - what a tool answers to a shell that asks what can follow.

#ifndef OPTRELLA_COMPLETIONSCRIPT_ANSWER_HPP
#define OPTRELLA_COMPLETIONSCRIPT_ANSWER_HPP

#include <span>
#include <string>

#include "Optrella/Tool.hpp"

namespace Optrella::Internal {

// Returns what `complete` offers, conventionally spelled: a line an offer, of kind, word and help,
// divided by tabs. `typed` are the arguments before the word, and last the word, as far as it is
// typed.
//
//   tag, choice, value     the whole word; a value without one is a value that nobody can list: its
//                          help begins with its name
//   file, directory, path  the shell completes a path, the last one of either kind; the word is
//                          what stands before the path: "--file=", mostly nothing
//
// A word that names one command, and has no help of its own, has the command's.
// After "--sort=" the values of "--sort" are offered, each as a whole word, "--sort=date".
// No help holds a control character: ends of lines and tabs become spaces. A word that holds one is
// left out, because without it, it would be another word.
[[nodiscard]] std::string completionAnswer(const Tool& tool, std::span<const Text> typed) noexcept;

}  // namespace Optrella::Internal

#endif
