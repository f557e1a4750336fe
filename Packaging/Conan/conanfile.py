"""Builds the library from the sources around this file, with the system's utf8proc.

conan create Packaging/Conan --no-remote
"""

import pathlib
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy
from conan.tools.system.package_manager import Apt, Brew

required_conan_version = ">=2.0"


class Optrella(ConanFile):
    name = "optrella"
    description = "Declared command lines for administration tools"
    # No `license`: the owner has chosen none yet.
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": False}

    def set_version(self):
        project = self.root() / "CMakeLists.txt"
        self.version = re.search(r"^project\(Optrella VERSION ([\d.]+)", project.read_text(),
                                 re.MULTILINE).group(1)

    def export(self):
        copy(self, "CMakeLists.txt", self.root(), self.export_folder)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "CMake/*", "Sources/*", "docs/man/*"):
            copy(self, pattern, self.root(), self.export_sources_folder)

    def root(self):
        """Where the project is: two directories up, until the recipe has been copied into the cache."""
        recipe = pathlib.Path(self.recipe_folder)
        return recipe if (recipe / "CMakeLists.txt").exists() else recipe.parent.parent

    def system_requirements(self):
        Apt(self).install(["libutf8proc-dev"], check=True)
        Brew(self).install(["utf8proc"], check=True)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["OPTRELLA_BUILD_TESTS"] = False
        toolchain.cache_variables["OPTRELLA_BUILD_EXAMPLES"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # CMake finds the library's own package files, which say all that its target needs.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/Optrella"]
        self.cpp_info.set_property("pkg_config_name", "optrella")
        self.cpp_info.libs = ["optrella"]
        if not self.options.shared:
            self.cpp_info.system_libs = ["utf8proc"]
            if self.settings.os == "Linux":
                self.cpp_info.system_libs += ["pthread", "dl"]
