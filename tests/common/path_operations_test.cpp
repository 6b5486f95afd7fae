// What all operations on paths have in common.
#include "tests/common/path_operations.h"

#include "tests/common/support.h"

using ksv::test::creatingOperations;
using ksv::test::exists;
using ksv::test::expectAllFail;
using ksv::test::lookingOperations;
using ksv::test::PathOperation;
using ksv::test::removingOperations;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

// Names that are ANSI text too, where the code page has them.
std::string name() { return ksv::test::ansiWord(); }

std::string encodedFor(const PathOperation& operation, const std::string& path) {
  return operation.isUtf8 ? path : *ksv::test::toAnsi(path);
}

}  // namespace

TEST(PathOperations, fail_for_what_is_missing) {
  TempDirectory directory;
  for (const std::string& path :
       {name(), name() + "/f", "./" + name() + "/f.txt", std::string("missing")}) {
    expectAllFail(lookingOperations(), path.c_str());
    expectAllFail(removingOperations(), path.c_str());
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(PathOperations, make_nothing_in_a_directory_that_is_missing) {
  TempDirectory directory;
  expectAllFail(creatingOperations(), (name() + "/f").c_str());
  expectAllFail(creatingOperations(), "missing/日本.txt");
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(PathOperations, fail_below_a_file) {
  TempDirectory directory;
  writeFile("f", "12345");
  expectAllFail(lookingOperations(), "f/inner");
  expectAllFail(removingOperations(), "f/inner");
  expectAllFail(creatingOperations(), "f/inner");
  EXPECT_EQ(ksv::test::readFile("f"), "12345");
}

TEST(PathOperations, fail_for_empty_and_null) {
  TempDirectory directory;
  for (const char* path : {"", static_cast<const char*>(nullptr)}) {
    for (const auto& operations : {lookingOperations(), removingOperations()}) {
      for (const PathOperation& operation : operations) {
        EXPECT_EQ(operation.run(path), operation.failure) << operation.name;
      }
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(PathOperations, know_and_remove_japanese_names) {
  TempDirectory directory;
  std::filesystem::create_directory(ksv::test::pathOf(name()));
  for (const PathOperation& operation : lookingOperations()) {
    const std::string file = name() + "/" + name() + ".txt";
    writeFile(file, "x");
    const std::string folder = encodedFor(operation, name());
    // Exactly one of the two is a file, and a directory is no file to open.
    const bool ofFile = operation.run(encodedFor(operation, file).c_str()) != operation.failure;
    const bool ofFolder = operation.run(folder.c_str()) != operation.failure;
    EXPECT_TRUE(ofFile || ofFolder) << operation.name;
  }
  for (const PathOperation& operation : removingOperations()) {
    const std::string file = name() + "/" + name() + ".txt";
    writeFile(file, "");
    const bool removed = operation.run(encodedFor(operation, file).c_str()) != operation.failure;
    EXPECT_EQ(exists(file), !removed) << operation.name;
  }
}

TEST(PathOperations, make_things_with_japanese_names) {
  TempDirectory directory;
  for (const PathOperation& operation : creatingOperations()) {
    std::filesystem::create_directory("d");
    const std::string path = "d/" + name() + ".txt";
    EXPECT_NE(operation.run(encodedFor(operation, path).c_str()), operation.failure)
        << operation.name;
    EXPECT_FALSE(std::filesystem::is_empty("d")) << operation.name;
    std::filesystem::remove_all("d");
  }
}
