// The trees of compound documents, beside libgsf: ksv_document_tree_bench.
//
// A document is opened from its file and every entry's name and size asked for. The library's check
// and writing anew have no counterpart there.
#include <benchmark/benchmark.h>
#include <gsf/gsf.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "kit/documents/document_edit.h"
#include "ksv.h"
#include "tests/ole/compound_writer.h"

namespace {

using ksv::test::pattern;
using ksv_kit::documents::bytesOfFile;
using ksv_kit::documents::Document;
using ksv_kit::documents::DocumentEdit;

// Names, sizes and how many they are.
struct Listed {
  size_t entries = 0;
  uint64_t bytes = 0;

  bool operator==(const Listed&) const = default;
};

Listed listedByLibrary(const std::string& path) {
  ksv_document* document = nullptr;
  if (ksv_document_open(path.c_str(), &document, nullptr) != KSV_OK) return {};
  Listed listed;
  for (size_t i = 1; const ksv_entry* entry = ksv_document_entry(document, i); ++i) {
    benchmark::DoNotOptimize(entry->name);
    ++listed.entries;
    listed.bytes += entry->size;
  }
  ksv_document_close(document);
  return listed;
}

void listByGsf(GsfInfile* storage, Listed& listed) {
  for (int i = 0; i < gsf_infile_num_children(storage); ++i) {
    GsfInput* child = gsf_infile_child_by_index(storage, i);
    benchmark::DoNotOptimize(gsf_input_name(child));
    ++listed.entries;
    if (GSF_IS_INFILE(child) && gsf_infile_num_children(GSF_INFILE(child)) >= 0)
      listByGsf(GSF_INFILE(child), listed);
    else
      listed.bytes += static_cast<uint64_t>(gsf_input_size(child));
    g_object_unref(child);
  }
}

Listed listedByGsf(const std::string& path) {
  GsfInput* input = gsf_input_stdio_new(path.c_str(), nullptr);
  GsfInfile* file = gsf_infile_msole_new(input, nullptr);
  g_object_unref(input);
  Listed listed;
  listByGsf(file, listed);
  g_object_unref(file);
  return listed;
}

Listed checkedByLibrary(const std::string& path) {
  const auto document = Document::open(bytesOfFile(path.c_str()));
  document->check();
  return {document->damages().told().size(), 0};
}

Listed writtenByLibrary(const std::string& path) {
  const auto document = Document::open(bytesOfFile(path.c_str()));
  Listed written;
  DocumentEdit(*document).write([&](const uint8_t*, size_t count) { written.bytes += count; });
  return written;
}

void writeDocument(const std::string& path, int streams, size_t size) {
  DocumentEdit edit;
  for (int i = 0; i < streams; ++i) {
    const std::string bytes = pattern(size, static_cast<uint32_t>(i + 1));
    edit.setStream("storage " + std::to_string(i / 10) + "/stream " + std::to_string(i),
                   {bytes.begin(), bytes.end()});
  }
  std::ofstream file(path, std::ios::binary);
  edit.write([&](const uint8_t* bytes, size_t count) {
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
  });
}

using Work = Listed (*)(const std::string& path);

void add(const std::string& group, const char* name, const std::string& path, Work work) {
  benchmark::RegisterBenchmark((group + "/" + name).c_str(), [path, work](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(work(path));
  })->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  gsf_init();
  const auto room = std::filesystem::temp_directory_path() / "ksv_document_tree_bench";
  std::filesystem::create_directories(room);
  struct Shape {
    const char* name;
    int streams;
    size_t size;
  };
  for (const Shape& shape :
       {Shape{"12_streams_of_3_KB", 12, 3000}, Shape{"12_of_300_KB", 12, 300'000},
        Shape{"2000_of_1_KB", 2000, 1000}}) {
    const std::string path = (room / shape.name).string();
    writeDocument(path, shape.streams, shape.size);
    if (listedByLibrary(path) != listedByGsf(path)) {
      std::fprintf(stderr, "%s: the readers disagree\n", shape.name);
      return EXIT_FAILURE;
    }
    add(shape.name, "list", path, listedByLibrary);
    add(shape.name, "list_gsf", path, listedByGsf);
    add(shape.name, "check", path, checkedByLibrary);
    add(shape.name, "write", path, writtenByLibrary);
  }
  benchmark::RunSpecifiedBenchmarks();
  std::filesystem::remove_all(room);
  gsf_shutdown();
  return EXIT_SUCCESS;
}
