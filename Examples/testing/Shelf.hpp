// Shelf.hpp - the command lines of a tool that keeps a shelf of books, apart from its main
// function.
//
// What the actions work on and what they print to is passed in, so a test can use its own.

#ifndef SHELF_HPP
#define SHELF_HPP

#include <Optrella/Optrella.hpp>
#include <string>
#include <vector>

struct Shelf {
    std::vector<std::string> books;
    std::string printed;
    int status = 0;
};

// The declarations of a tool whose actions work on `shelf`, which must outlive them. Made by each
// call, because the actions have captures.
std::vector<Optrella::CommandLinePossibility> commandLinesOf(Shelf& shelf);

#endif
