# Asks a tool for its completion and its manual page, and writes them into directories of their own
# under ${written}: bash, zsh, fish, man/man1 or man/man8. Run by optrella_install_tool.
cmake_minimum_required(VERSION 3.25)

cmake_path(GET program FILENAME name)

function(fail)
  string(CONCAT why ${ARGN})
  # Half of them must not be installed.
  file(REMOVE_RECURSE ${written})
  message(FATAL_ERROR "optrella_install_tool: ${why}")
endfunction()

# Writes what the tool prints. It runs as in a script: nobody can answer it.
function(write file)
  list(JOIN ARGN " " line)
  cmake_path(GET file PARENT_PATH directory)
  file(MAKE_DIRECTORY ${directory})
  execute_process(COMMAND ${emulator} "${program}" ${ARGN}
    INPUT_FILE /dev/null OUTPUT_FILE "${file}" ERROR_VARIABLE errors RESULT_VARIABLE status TIMEOUT 60)
  if(NOT status STREQUAL "0")
    fail("'${name} ${line}' ends with '${status}' and says '${errors}'. "
      "A tool whose main is runTool answers, unless it declares this option itself.")
  endif()
endfunction()

# An answer to something else.
unset(ENV{OPTRELLA_COMPLETE})

file(REMOVE_RECURSE ${written})
write(${written}/bash/${name} --completion bash)
write(${written}/zsh/_${name} --completion zsh)
write(${written}/fish/${name}.fish --completion fish)
write(${written}/page --manual)

foreach(file IN ITEMS bash/${name} zsh/_${name} fish/${name}.fish)
  file(READ ${written}/${file} script)
  string(FIND "${script}" "'${name}'" place)
  if(place EQUAL -1)
    fail("the completion of '${name}' does not name it. "
      "A Tool has the name of the program's file, and shells take not every name for a command.")
  endif()
endforeach()

file(STRINGS ${written}/page title LIMIT_COUNT 1 REGEX "^\\.Dt [^ ]+ [18]$")
if(NOT title)
  fail("'${name} --manual' prints no manual page")
endif()
string(REGEX REPLACE ".* " "" section "${title}")
file(MAKE_DIRECTORY ${written}/man/man${section})
file(RENAME ${written}/page ${written}/man/man${section}/${name}.${section})
