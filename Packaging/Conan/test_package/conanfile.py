import pathlib

from conan import ConanFile
from conan.errors import ConanException
from conan.tools.build import can_run
from conan.tools.cmake import CMake, cmake_layout


class OptrellaTest(ConanFile):
    settings = "os", "arch", "compiler", "build_type"
    generators = "CMakeToolchain", "VirtualRunEnv"

    def requirements(self):
        self.requires(self.tested_reference_str)

    def layout(self):
        cmake_layout(self)

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def test(self):
        if not can_run(self):
            return
        directory = pathlib.Path(self.build_folder)
        said = directory / "said"
        self.run(f'"{directory / "greet"}" greet --name Ann >"{said}"', env="conanrun")
        if said.read_text() != "Hello, Ann!\n":
            raise ConanException(f"greet said {said.read_text()!r}")
