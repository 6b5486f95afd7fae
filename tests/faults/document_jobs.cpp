// Compound documents and their properties.
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "ksv_cconv.h"
#include "ksv_ole.h"
#include "tests/faults/charset_files.h"
#include "tests/faults/job.h"
#include "tests/ole/compound_writer.h"

namespace ksv::test {
namespace {

constexpr char kDocument[] = "document.doc";
constexpr char kMade[] = "made.ole";
// Found before a job moves to another drive.
const std::filesystem::path kDocuments = std::filesystem::absolute(KSV_TEST_DOCUMENTS);

void installMade() {
  CompoundWriter writer;
  const uint32_t storage = writer.addStorage(0, u"Storage");
  writer.addStream(storage, u"Long", pattern(20000));
  writer.addStream(storage, u"Short", pattern(1000, 2));
  writeInput(kMade, writer.write());
}

void readsStream(Answer& answer, Ksv2Ole* storage, const char* name) {
  Ksv2OleStream* stream = KSV_2OLEopenStream(storage, name);
  if (!answer.needs(stream != nullptr, "KSV_2OLEopenStream")) return;
  static std::array<char, 20480> content;
  const uint32_t size = KSV_2OLEseekStream(stream, 0, 2);
  if (answer.needs(size != KSV_2OLE_NO_POSITION, "KSV_2OLEseekStream")) {
    answer.add("size", size);
    answer.expects("KSV_2OLEseekStream", KSV_2OLEseekStream(stream, 0, 0), KSV_2OLE_NO_POSITION);
    const uint32_t count = KSV_2OLEreadStream(stream, content.data(), size);
    if (answer.needs(count == size, "KSV_2OLEreadStream"))
      answer.add("content", std::string_view(content.data(), count));
  }
  answer.needs(KSV_2OLEcloseStream(stream) == 1, "KSV_2OLEcloseStream");
}

void readsStorage(Answer& answer, Ksv2Ole* file) {
  Ksv2Ole* storage = KSV_2OLEopenStorage(file, "Storage");
  if (!answer.needs(storage != nullptr, "KSV_2OLEopenStorage")) return;
  uint8_t classId[KSV_2OLE_CLASS_ID_SIZE];
  answer.expects("KSV_2OLEGetClassID", KSV_2OLEGetClassID(storage, classId), 0);
  readsStream(answer, storage, "Long");
  readsStream(answer, storage, "Short");
  answer.needs(KSV_2OLEcloseStorage(storage) == 1, "KSV_2OLEcloseStorage");
}

void readsCompoundFile(Answer& answer) {
  Ksv2Ole* file = KSV_2OLEopen(kMade);
  if (!answer.needs(file != nullptr, "KSV_2OLEopen")) return;
  readsStorage(answer, file);
  answer.needs(KSV_2OLEclose(file) == 1, "KSV_2OLEclose");
}

class SummaryJob : public Job {
 public:
  SummaryJob() : Job("summary") { std::strcpy(settings_.language, "Japanese"); }

  void install() override {
    installCharsets({"utf-8", "windows31j"});
    std::ifstream file(kDocuments / "japanese.doc", std::ios::binary);
    writeInput(kDocument, {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
    std::strcpy(settings_.targetCharset, "UTF-8");
  }
  bool isSilent() const override { return true; }
  bool prepare(Answer& answer) override { return startLoaded(answer); }
  void act(Answer& answer) override {
    const uint16_t parameters[3] = {9003, 0, 932};
    const uint32_t result = SummaryInfo(kDocument, &settings_, record_.data(), parameters);
    if (!answer.needs(result == KSV_SUMMARY_DONE, "SummaryInfo")) return;
    answer.add("title", record_.data() + KSV_SUMMARY_TITLE);
    answer.add("record", std::string_view(record_.data(), record_.size()));
  }
  void finish() override { endProcess(); }

 private:
  KsvSummarySettings settings_ = {};
  std::array<char, KSV_SUMMARY_RECORD_SIZE> record_;
};

}  // namespace

void addDocumentJobs(Jobs& jobs) {
  jobs.push_back(std::make_unique<SimpleJob>("compound_file", readsCompoundFile, installMade));
  jobs.push_back(std::make_unique<SummaryJob>());
}

}  // namespace ksv::test
