#include "Shelf.hpp"

#include <sysexits.h>

#include <algorithm>

using namespace Optrella;

namespace {

constexpr ParameterString addTitle{{"add"}, "title", "Title of the book"};
constexpr ParameterString removeTitle{{"remove"}, "title", "Title of the book"};
constexpr ParameterNone list{{"list"}, ""};
constexpr ParameterNone sorted{{"-s", "--sorted"}, "Sort the titles"};
constexpr ParameterNone last{{"--last"}, "Remove the last one of that title, not all"};

void addBook(Shelf& shelf, const std::string& title) {
    if (title.empty()) {
        shelf.printed += "A book needs a title\n";
        shelf.status = EX_USAGE;
        return;
    }
    shelf.books.push_back(title);
}

void removeBook(Shelf& shelf, const std::string& title, bool lastAlone) {
    std::vector<std::string>& books = shelf.books;
    const auto found = std::find(books.rbegin(), books.rend(), title);
    if (found == books.rend()) {
        shelf.printed += title + " is not on the shelf\n";
        shelf.status = 1;
    } else if (lastAlone) {
        books.erase(found.base() - 1);
    } else {
        std::erase(books, title);
    }
}

void listBooks(Shelf& shelf, bool isSorted) {
    std::vector<std::string> books = shelf.books;
    if (isSorted) std::sort(books.begin(), books.end());
    for (const std::string& book : books) shelf.printed += book + "\n";
}

}  // namespace

std::vector<CommandLinePossibility> commandLinesOf(Shelf& shelf) {
    return {
        {false,
         {addTitle},
         {},
         "Put a book on the shelf.",
         false,
         [&](const Parameters& given) { addBook(shelf, fetchString(addTitle, given).str()); }},
        {false,
         {removeTitle},
         {last},
         "Take a book off the shelf.",
         false,
         [&](const Parameters& given) {
             removeBook(shelf, fetchString(removeTitle, given).str(), hasOptional(last, given));
         }},
        {false,
         {list},
         {sorted},
         "List the books.",
         false,
         [&](const Parameters& given) { listBooks(shelf, hasOptional(sorted, given)); }},
    };
}
