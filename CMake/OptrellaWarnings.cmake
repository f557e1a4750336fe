# Warnings for this project's own targets. Never exported: consumers choose their own.
add_library(OptrellaWarnings INTERFACE)
target_compile_options(OptrellaWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  $<$<BOOL:${OPTRELLA_WARNINGS_AS_ERRORS}>:-Werror>)
