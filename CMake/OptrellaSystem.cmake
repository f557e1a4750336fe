# The directory under Sources/Optrella/Platform with what this system defines. Another system is a
# directory of its own there and a line here: docs/porting.md.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(OPTRELLA_SYSTEM Linux)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  set(OPTRELLA_SYSTEM MacOS)
else()
  message(FATAL_ERROR "Optrella: no Platform/ directory for ${CMAKE_SYSTEM_NAME}")
endif()
