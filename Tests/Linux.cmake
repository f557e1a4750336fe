# The tests that only Linux can run: they wrap calls of the C library, look into /proc, or make a
# system of their own in namespaces.

optrella_script(directories-tests Scripts/directories_test.py)
set_tests_properties(directories-tests PROPERTIES LABELS once SKIP_RETURN_CODE 77)

optrella_script(system-tests Platform/SystemTests.py
  $<TARGET_FILE:Optrella> ${OPTRELLA_SYSTEM} ${CMAKE_COMMAND})

# The password check, with PAM's calls and the heap in the tests' hands, and on stacks of their own.
set(passwordCheck
  ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Linux/Password.cpp
  ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Linux/PasswordCheck.cpp
  ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Posix/Password.cpp)
optrella_test(pam-unit-tests
  SOURCES Pam/ConversationTests.cpp Pam/InterfaceTests.cpp Pam/LibraryTests.cpp ${passwordCheck}
  LIBRARIES ${CMAKE_DL_LIBS})
target_link_options(pam-unit-tests PRIVATE
  -Wl,--wrap=malloc,--wrap=calloc,--wrap=free,--wrap=dlopen,--wrap=dlsym,--wrap=dlclose)
add_library(pam-test-module MODULE Pam/Module.cpp)
target_compile_features(pam-test-module PRIVATE cxx_std_20)
target_include_directories(pam-test-module PRIVATE ${PROJECT_SOURCE_DIR}/Sources)
target_link_libraries(pam-test-module PRIVATE OptrellaWarnings)
optrella_test(pam-stack-tests
  SOURCES Pam/StackTests.cpp ${passwordCheck}
  LIBRARIES ${CMAKE_DL_LIBS})
target_compile_definitions(pam-stack-tests PRIVATE
  PAM_TEST_MODULE="$<TARGET_FILE:pam-test-module>")
add_dependencies(pam-stack-tests pam-test-module)

# The child process, as /proc and its memory show it; and with the system's calls in the tests' hands.
target_sources(child-process-tests PRIVATE
  ChildProcess/LinuxChildProcessTests.cpp ChildProcess/Secret.cpp)
optrella_test(child-process-fault-tests
  SOURCES
    ChildProcess/ChildProcessFaultTests.cpp
    ChildProcess/Secret.cpp
    ${traces}
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Linux/Password.cpp
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Linux/Descriptor.cpp
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Linux/Process.cpp
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Posix/ChildProcess.cpp
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Posix/Descriptor.cpp
    ${PROJECT_SOURCE_DIR}/Sources/Optrella/Platform/Posix/Password.cpp)
foreach(call IN ITEMS
    pipe2 fcntl pthread_create write waitpid poll read ioctl
    posix_spawn posix_spawn_file_actions_init posix_spawn_file_actions_adddup2
    posix_spawnattr_init posix_spawnattr_setflags posix_spawnattr_setsigmask
    posix_spawnattr_setsigdefault)
  target_link_options(child-process-fault-tests PRIVATE -Wl,--wrap=${call})
endforeach()
add_dependencies(child-process-fault-tests child-probe)

# A script that makes a system of its own in namespaces: as root, with users of its own, and again
# without any rights, with what that allows.
function(optrella_namespace_script name script)
  list(TRANSFORM ARGN REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE programs)
  foreach(kind root user)
    optrella_script(${name}-${kind} ${script} --${kind} ${programs})
    set_tests_properties(${name}-${kind} PROPERTIES SKIP_RETURN_CODE 77)
  endforeach()
endfunction()

# Passwords and the terminal reader, with the system's calls in the tests' hands.
target_sources(password-tests PRIVATE Terminal/LinuxPasswordTests.cpp)
target_link_options(password-tests PRIVATE -Wl,--wrap=mmap,--wrap=munmap,--wrap=mlock)
optrella_probe(terminal-fault-probe Terminal/FaultProbe.cpp)
foreach(call IN ITEMS
    open pipe2 fcntl sigaction tcgetattr tcsetattr select read write mmap)
  target_link_options(terminal-fault-probe PRIVATE -Wl,--wrap=${call})
endforeach()
optrella_script(terminal-fault-tests Terminal/FaultTests.py $<TARGET_FILE:terminal-fault-probe>)

target_sources(start-arguments-tests PRIVATE ChildProcess/LinuxStartArgumentsTests.cpp)

# The file of the program that runs, and another program in its place.
optrella_probe(own-program-probe Platform/OwnProgramProbe.cpp)
optrella_test(own-program-tests
  SOURCES Platform/OwnProgramTests.cpp ${traces}
  LIBRARIES Optrella::Optrella)
add_dependencies(own-program-tests own-program-probe)

optrella_probe(concealment-probe Platform/ConcealmentProbe.cpp)
optrella_script(concealment-tests Platform/ConcealmentTests.py $<TARGET_FILE:concealment-probe>)

optrella_probe(log-probe Platform/LogProbe.cpp)
optrella_namespace_script(log-tests Platform/LogTests.py log-probe)
optrella_probe(directory-probe Platform/DirectoryProbe.cpp)
optrella_namespace_script(directory-tests Platform/DirectoryTests.py directory-probe)

optrella_probe(pam-probe Pam/Probe.cpp)
optrella_namespace_script(pam-tests Pam/PamTests.py pam-probe)

# Root commands from the prompt to the end of the second start, with the real sudo and a scripted one.
if(TARGET hosts)
  optrella_probe(elevation-probe Elevation/ElevationProbe.cpp Elevation/Steps.cpp Support/Probe.cpp)
  optrella_probe(fake-sudo Elevation/FakeSudo.cpp Elevation/Steps.cpp Support/Probe.cpp)
  optrella_namespace_script(elevation-tests Elevation/ElevationTests.py
    elevation-probe hosts fake-sudo)
  optrella_probe(hand-to-sudo-probe
    Elevation/HandToSudoProbe.cpp Elevation/Steps.cpp Support/Probe.cpp)
  optrella_namespace_script(hand-to-sudo-tests Elevation/HandToSudoTests.py
    hand-to-sudo-probe fake-sudo)
endif()

if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize|--coverage")  # it brings its own compiler and sanitizers
  add_subdirectory(MacOS)
endif()
