# From a checkout: brew install --HEAD --formula Packaging/Homebrew/optrella.rb
# A release adds its `url` and `sha256` here.
class Optrella < Formula
  desc "Declared command lines for administration tools, a C++20 library"
  homepage "https://optrella.example"
  head "file://#{File.expand_path("../..", __dir__)}", using: :git

  depends_on "cmake" => :build
  depends_on macos: :monterey
  depends_on "utf8proc"

  # The clang of Xcode 13; that of Xcode 14 is the oldest.
  fails_with :clang do
    build 1316
    cause "the library needs more of C++20"
  end

  def install
    system "cmake", "-S", ".", "-B", "build", "-DOPTRELLA_BUILD_TESTS=OFF",
           "-DOPTRELLA_BUILD_EXAMPLES=OFF", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  test do
    (testpath/"CMakeLists.txt").write <<~CMAKE
      cmake_minimum_required(VERSION 3.25)
      project(greet LANGUAGES CXX)
      find_package(Optrella CONFIG REQUIRED)
      add_executable(greet greet.cpp)
      target_link_libraries(greet PRIVATE Optrella::Optrella)
    CMAKE
    (testpath/"greet.cpp").write <<~CPP
      #include <Optrella/Optrella.hpp>
      #include <cstdio>
      using namespace Optrella;
      int main(int argc, char* argv[]) {
          const ParameterNone greet{{"greet"}, ""};
          const CommandLinePossibility lines[] = {
              {false, {greet}, {}, "Greets.", false, [](const Parameters&) { std::puts("Hello"); }},
          };
          return parse(lines, argc, argv) == parsingError::NoError ? 0 : 64;
      }
    CPP
    system "cmake", "-S", ".", "-B", "build"
    system "cmake", "--build", "build"
    assert_equal "Hello\n", shell_output("build/greet greet")
  end
end
