// shelf - keeps a shelf of books in the file shelf.txt.

#include <sysexits.h>

#include <fstream>
#include <iostream>

#include "Shelf.hpp"

int main(int argc, char* argv[]) {
    Shelf shelf;
    std::string line;
    for (std::ifstream file("shelf.txt"); std::getline(file, line);) shelf.books.push_back(line);

    const auto commandLines = commandLinesOf(shelf);
    if (parse(commandLines, argc, argv) != Optrella::parsingError::NoError) {
        Optrella::displayHelp(commandLines);
        return EX_USAGE;
    }
    std::cout << shelf.printed;
    std::ofstream file("shelf.txt");
    for (const std::string& book : shelf.books) file << book << '\n';
    return shelf.status;
}
