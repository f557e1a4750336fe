# Finds utf8proc and makes the target Utf8proc::Utf8proc. The archive is preferred, so that a tool has
# one shared object less to load at its start; not where libraries are to be shared.
if(NOT BUILD_SHARED_LIBS)
  set(Utf8proc_archive libutf8proc.a)
endif()
find_path(Utf8proc_INCLUDE_DIR utf8proc.h)
find_library(Utf8proc_LIBRARY NAMES ${Utf8proc_archive} utf8proc)
unset(Utf8proc_archive)
mark_as_advanced(Utf8proc_INCLUDE_DIR Utf8proc_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Utf8proc
  REQUIRED_VARS Utf8proc_LIBRARY Utf8proc_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "Debian and Ubuntu have it as libutf8proc-dev, Homebrew as utf8proc")

if(Utf8proc_FOUND AND NOT TARGET Utf8proc::Utf8proc)
  add_library(Utf8proc::Utf8proc UNKNOWN IMPORTED)
  set_target_properties(Utf8proc::Utf8proc PROPERTIES
    IMPORTED_LOCATION "${Utf8proc_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Utf8proc_INCLUDE_DIR}")
endif()
