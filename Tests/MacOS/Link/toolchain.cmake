# For macOS, from Linux: Scripts/macos-link makes the programs in OPTRELLA_CROSS_TOOLS.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 21) # that of macOS 12
set(CMAKE_SYSTEM_PROCESSOR ${OPTRELLA_CROSS_PROCESSOR})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES OPTRELLA_CROSS_PROCESSOR OPTRELLA_CROSS_TOOLS)
foreach(language IN ITEMS C CXX)
  set(CMAKE_${language}_COMPILER ${OPTRELLA_CROSS_TOOLS}/${language})
endforeach()
foreach(tool IN ITEMS AR RANLIB INSTALL_NAME_TOOL)
  set(CMAKE_${tool} ${OPTRELLA_CROSS_TOOLS}/${tool} CACHE FILEPATH "")
endforeach()
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/rules.cmake)

# The headers and the names of the system come with the compiler.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
# Nothing of the machine's own but programs and, by the name of their directory, its packages.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_USE_CMAKE_SYSTEM_PATH OFF)
