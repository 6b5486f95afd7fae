// The properties of compound documents, beside libgsf: ksv_document_bench.
//
// SummaryInfo (library) opens the file, reads it and converts every text to UTF-8; so does libksv,
// which looks for the kind of document as well; libgsf does the same from a file (gsf_file) and
// from bytes that are in memory already (gsf_memory).
#include <benchmark/benchmark.h>
#include <gsf/gsf.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ksv.hpp"
#include "ksv_cconv.h"
#include "ksv_ole.h"
#include "tests/ole/compound_writer.h"
#include "tests/ole/property_set_writer.h"

namespace {

using ksv::test::CompoundWriter;

struct Document {
  std::string path;
  std::string bytes;
};

struct Properties {
  std::string title;
  std::string author;

  bool operator==(const Properties&) const = default;
};

// Removed at the end, with what is in it.
class Scratch {
 public:
  Scratch() : path_(std::filesystem::temp_directory_path() / "ksv_document_bench") {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  std::string pathOf(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Blocks of zeroes become holes.
void writeSparse(const std::string& path, const std::string& bytes) {
  constexpr size_t kBlock = 4096;
  const std::string zeroes(kBlock, '\0');
  std::ofstream file(path, std::ios::binary);
  for (size_t at = 0; at < bytes.size(); at += kBlock) {
    const std::string_view block = std::string_view(bytes).substr(at, kBlock);
    if (block == std::string_view(zeroes).substr(0, block.size())) continue;
    file.seekp(static_cast<std::streamoff>(at));
    file.write(block.data(), static_cast<std::streamsize>(block.size()));
  }
  file.close();
  std::filesystem::resize_file(path, bytes.size());
}

CompoundWriter documentOf(size_t size, const std::string& contents) {
  using namespace ksv::test;  // the properties
  CompoundWriter writer;
  writer.addStream(0, u"WordDocument", contents);
  writer.addStream(0, u"1Table", pattern(size / 8 + 100, 2));
  const uint32_t pool = writer.addStorage(0, u"ObjectPool");
  for (char16_t c = u'a'; c < u'a' + static_cast<char16_t>(size / 100000 % 20); ++c) {
    const uint32_t object = writer.addStorage(pool, std::u16string{u'_', c});
    writer.addStream(object, u"contents", pattern(3000, c));
  }
  const std::string number = std::to_string(size);
  writer.addStream(
      0, u"\u0005SummaryInformation",
      summary({codePage(932), text(2, "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x95\xB6\x8F\x91 " + number),
               text(3, "\x95\x5C\x91\xE8\x82\xCC\x90\xE0\x96\xBE"),
               text(4, "\x8E\x52\x93\x63\x91\xBE\x98\x59"), text(5, "keywords"),
               text(6, "\x92\x8D\x8E\xDF"), text(8, "\x97\xE9\x96\xD8\x89\xD4\x8E\x71"),
               text(9, "7"), time(12, fileTime(2024, 2, 29)), time(13, fileTime(2024, 3, 31)),
               text(18, "Application")}));
  writer.addStream(0, u"\u0005DocumentSummaryInformation",
                   documentSummary({codePage(932), text(2, "\x95\xAA\x97\xDE"), integer(6, 12),
                                    text(14, "manager"), text(15, "\x89\xEF\x8E\xD0")}));
  return writer;
}

// 120 documents from 6 KB to 6 MB, each six hundredths larger than the one before.
std::vector<Document> makeDocuments(const Scratch& scratch) {
  std::vector<Document> documents;
  double size = 4200;
  for (int i = 0; i < 120; ++i, size *= 1.06) {
    const auto bytes = static_cast<size_t>(size);
    Document document;
    document.path = scratch.pathOf(std::to_string(i));
    document.bytes = documentOf(bytes, ksv::test::pattern(bytes)).write();
    std::ofstream(document.path, std::ios::binary) << document.bytes;
    documents.push_back(std::move(document));
  }
  return documents;
}

Properties readByLibrary(const std::string& path) {
  static std::string record(KSV_SUMMARY_RECORD_SIZE, '\0');
  const KsvSummarySettings settings = {"UTF-8", "Japanese", 0, 0x20};
  const uint16_t parameters[3] = {9003, 0, 932};
  if (SummaryInfo(path.c_str(), &settings, record.data(), parameters) != KSV_SUMMARY_DONE)
    return {};
  return {record.c_str() + KSV_SUMMARY_TITLE, record.c_str() + KSV_SUMMARY_AUTHOR};
}

// All properties of both sets, and the kind of document.
Properties readByKit(const Document& document) {
  ksv::Document opened = ksv::Document::open(document.path);
  const ksv::Properties properties = ksv::Properties::of(opened);
  benchmark::DoNotOptimize(ksv::kind_of(opened));
  return {properties.text("title").value_or(""), properties.text("author").value_or("")};
}

std::string lookUp(GsfDocMetaData* meta, const char* name) {
  GsfDocProp* property = gsf_doc_meta_data_lookup(meta, name);
  return property != nullptr ? g_value_get_string(gsf_doc_prop_get_val(property)) : "";
}

// Takes the input over.
Properties readByGsf(GsfInput* input) {
  GsfInfile* file = gsf_infile_msole_new(input, nullptr);
  g_object_unref(input);
  if (file == nullptr) return {};
  GsfDocMetaData* meta = gsf_doc_meta_data_new();
  for (const char* name : {"\05SummaryInformation", "\05DocumentSummaryInformation"}) {
    GsfInput* stream = gsf_infile_child_by_name(file, name);
    if (stream == nullptr) continue;
    gsf_doc_meta_data_read_from_msole(meta, stream);
    g_object_unref(stream);
  }
  Properties properties = {lookUp(meta, GSF_META_NAME_TITLE), lookUp(meta, GSF_META_NAME_CREATOR)};
  g_object_unref(meta);
  g_object_unref(file);
  return properties;
}

Properties readByGsfFile(const Document& document) {
  return readByGsf(gsf_input_stdio_new(document.path.c_str(), nullptr));
}

Properties readByGsfMemory(const Document& document) {
  return readByGsf(gsf_input_memory_new(reinterpret_cast<const guint8*>(document.bytes.data()),
                                        static_cast<gsf_off_t>(document.bytes.size()), FALSE));
}

using Reader = Properties (*)(const Document& document);

Properties readDocumentByLibrary(const Document& document) { return readByLibrary(document.path); }

void measure(benchmark::State& state, const Document* documents, size_t count, Reader reader) {
  for (auto _ : state) {
    for (size_t i = 0; i < count; ++i) benchmark::DoNotOptimize(reader(documents[i]));
  }
  const double files = static_cast<double>(state.iterations()) * static_cast<double>(count);
  state.counters["per_file"] =
      benchmark::Counter(files, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

bool agree(const std::vector<Document>& documents) {
  for (const Document& document : documents) {
    const Properties properties = readDocumentByLibrary(document);
    if (properties.title.empty() || readByGsfFile(document) != properties ||
        readByKit(document) != properties ||
        (!document.bytes.empty() && readByGsfMemory(document) != properties)) {
      std::fprintf(stderr, "%s: the readers disagree\n", document.path.c_str());
      return false;
    }
  }
  return true;
}

void add(const char* group, const Document* documents, size_t count) {
  const auto name = [&](const char* contestant) { return std::string(group) + "/" + contestant; };
  const auto addOne = [&](const char* contestant, Reader reader) {
    benchmark::RegisterBenchmark(name(contestant).c_str(), measure, documents, count, reader)
        ->Unit(benchmark::kMicrosecond);
  };
  addOne("library", readDocumentByLibrary);
  addOne("libksv", readByKit);
  addOne("gsf_file", readByGsfFile);
  if (!documents->bytes.empty()) addOne("gsf_memory", readByGsfMemory);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  gsf_init();
  if (startProcess() == 0 || cconvLoadRule() == 0) return EXIT_FAILURE;
  const Scratch scratch;
  const std::vector<Document> documents = makeDocuments(scratch);
  std::vector<Document> large = {{scratch.pathOf("large"), ""}};
  constexpr size_t kGigabyte = 1'000'000'000;
  writeSparse(large[0].path, documentOf(100000, std::string(kGigabyte, '\0')).write());
  if (!agree(documents) || !agree(large)) return EXIT_FAILURE;

  const size_t third = documents.size() / 3;
  add("small_6_to_50_KB", documents.data(), third);
  add("medium_50_to_500_KB", documents.data() + third, third);
  add("large_0.5_to_6_MB", documents.data() + 2 * third, third);
  add("all", documents.data(), documents.size());
  add("one_of_1_GB", large.data(), 1);
  benchmark::RunSpecifiedBenchmarks();
  endProcess();
  gsf_shutdown();
  return EXIT_SUCCESS;
}
