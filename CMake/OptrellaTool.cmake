# optrella_install_tool(<target> [DESTINATION <directory>] [COMPONENT <component>])
#
# Installs a tool whose main is runTool, as install(TARGETS) does, and what it says of itself where
# shells and man look for it: the completion of bash, zsh and fish, and the manual page. To write
# them the tool is started when it has been built; one that does not answer fails the build. Call it
# where the target is added. docs/installing.md
#
# Variables of whoever builds the package, each relative to the prefix or absolute:
#
#   OPTRELLA_BASH_COMPLETION_DIR  share/bash-completion/completions
#   OPTRELLA_ZSH_COMPLETION_DIR   share/zsh/site-functions
#   OPTRELLA_FISH_COMPLETION_DIR  share/fish/vendor_completions.d
#   CMAKE_INSTALL_MANDIR          share/man
function(optrella_install_tool target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESTINATION;COMPONENT" "")
  if(arg_UNPARSED_ARGUMENTS OR arg_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "optrella_install_tool: what is this? "
      "${arg_UNPARSED_ARGUMENTS} ${arg_KEYWORDS_MISSING_VALUES}")
  endif()
  include(GNUInstallDirs)
  if(NOT arg_DESTINATION)
    set(arg_DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
  set(component)
  if(arg_COMPONENT)
    set(component COMPONENT ${arg_COMPONENT})
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION ${arg_DESTINATION} ${component})

  get_target_property(emulator ${target} CROSSCOMPILING_EMULATOR)
  if(CMAKE_CROSSCOMPILING AND NOT emulator)
    message(WARNING "optrella_install_tool: ${target} is installed without its completion and its "
      "manual page: built for another system, it cannot be asked for them here. "
      "CMAKE_CROSSCOMPILING_EMULATOR may name a program that runs it.")
    return()
  endif()
  if(NOT CMAKE_CROSSCOMPILING)
    set(emulator)
  endif()

  # What is left of a tool that had another name or section would be installed, too.
  set(written ${CMAKE_CURRENT_BINARY_DIR}/optrella_install_tool/${target})
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMAND ${CMAKE_COMMAND} "-Dprogram=$<TARGET_FILE:${target}>" "-Demulator=${emulator}"
      "-Dwritten=${written}" -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/OptrellaToolFiles.cmake
    COMMENT "Writing the completion and the manual page of ${target}")
  set(data ${CMAKE_INSTALL_DATAROOTDIR})
  set(bash ${data}/bash-completion/completions)
  set(zsh ${data}/zsh/site-functions)
  set(fish ${data}/fish/vendor_completions.d)
  foreach(shell IN ITEMS bash zsh fish)
    string(TOUPPER OPTRELLA_${shell}_COMPLETION_DIR chosen)
    if(DEFINED ${chosen})
      set(${shell} ${${chosen}})
    endif()
    install(DIRECTORY ${written}/${shell}/ DESTINATION ${${shell}} ${component})
  endforeach()
  install(DIRECTORY ${written}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} ${component})
endfunction()
