// What closing, and closing too early, does.
#include "tests/ole/ole_file.h"

extern "C" uint32_t (*const ksvOleHeaderIsC)(Ksv2OleStream* stream, uint32_t offset,
                                             uint16_t origin);

namespace ksv::test {
namespace {

class OleHandles : public OleTest {
 protected:
  OleHandles() {
    const uint32_t storage = writer_.addStorage(0, u"storage");
    writer_.node(storage).classId = "ABCDEFGHIJKLMNOP";
    writer_.node(0).classId = "0123456789abcdef";
    const uint32_t inner = writer_.addStorage(storage, u"inner");
    writer_.addStream(inner, u"deep", "deep");
    writer_.addStream(storage, u"stream", "content");
    writer_.addStream(0, u"top", "top");
    file_ = open(writer_.write()).release();
  }

  std::string classId(Ksv2Ole* handle) {
    std::string bytes(16, 'x');
    const int result = KSV_2OLEGetClassID(handle, reinterpret_cast<uint8_t*>(bytes.data()));
    return result == 1 ? bytes : "result " + std::to_string(result);
  }

  CompoundWriter writer_;
  Ksv2Ole* file_;
};

TEST_F(OleHandles, close_with_1_from_the_inside_out) {
  Ksv2Ole* storage = KSV_2OLEopenStorage(file_, "storage");
  Ksv2Ole* inner = KSV_2OLEopenStorage(storage, "inner");
  Ksv2OleStream* stream = KSV_2OLEopenStream(inner, "deep");
  EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
  EXPECT_EQ(KSV_2OLEcloseStorage(inner), 1);
  EXPECT_EQ(KSV_2OLEcloseStorage(storage), 1);
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
}

TEST_F(OleHandles, of_a_file_closed_with_an_open_stream_give_4096_and_fail_from_then_on) {
  Ksv2OleStream* stream = KSV_2OLEopenStream(file_, "top");
  EXPECT_EQ(KSV_2OLEclose(file_), KSV_2OLE_CHILDREN_OPEN);
  EXPECT_EQ(KSV_2OLE_CHILDREN_OPEN, 4096);
  EXPECT_EQ(read(stream, 3), "");
  EXPECT_EQ(KSV_2OLEseekStream(stream, 0, 0), KSV_2OLE_NO_POSITION);
  EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
}

TEST_F(OleHandles, of_a_file_closed_with_an_open_storage_give_4096_and_fail_from_then_on) {
  Ksv2Ole* storage = KSV_2OLEopenStorage(file_, "storage");
  Ksv2Ole* inner = KSV_2OLEopenStorage(storage, "inner");
  Ksv2OleStream* stream = KSV_2OLEopenStream(inner, "deep");
  EXPECT_EQ(KSV_2OLEclose(file_), 4096);
  EXPECT_EQ(KSV_2OLEopenStorage(storage, "inner"), nullptr);
  EXPECT_EQ(KSV_2OLEopenStream(storage, "stream"), nullptr);
  EXPECT_EQ(KSV_2OLEopenStream(inner, "deep"), nullptr);
  EXPECT_EQ(classId(storage), "result 0");
  EXPECT_EQ(read(stream, 3), "");
  EXPECT_EQ(KSV_2OLEcloseStorage(storage), 0);
  EXPECT_EQ(KSV_2OLEcloseStorage(inner), 0);
  EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
}

TEST_F(OleHandles, of_a_storage_closed_with_an_open_stream_give_0_and_fail_from_then_on) {
  Ksv2Ole* storage = KSV_2OLEopenStorage(file_, "storage");
  Ksv2OleStream* stream = KSV_2OLEopenStream(storage, "stream");
  EXPECT_EQ(KSV_2OLEcloseStorage(storage), 0);
  EXPECT_EQ(read(stream, 3), "");
  // The file has lost its child with the storage.
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
  EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
}

TEST_F(OleHandles, count_what_is_open_and_not_what_was) {
  for (int i = 0; i < 3; ++i) {
    Ksv2OleStream* stream = KSV_2OLEopenStream(file_, "top");
    Ksv2Ole* storage = KSV_2OLEopenStorage(file_, "storage");
    EXPECT_EQ(KSV_2OLEcloseStorage(storage), 1);
    EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
    EXPECT_EQ(KSV_2OLEopenStream(file_, "missing"), nullptr);
    EXPECT_EQ(KSV_2OLEopenStorage(file_, "missing"), nullptr);
  }
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
}

TEST_F(OleHandles, may_be_opened_twice_at_once) {
  Ksv2OleStream* first = KSV_2OLEopenStream(file_, "top");
  Ksv2OleStream* second = KSV_2OLEopenStream(file_, "top");
  EXPECT_EQ(read(first, 1), "t");
  EXPECT_EQ(KSV_2OLEcloseStream(first), 1);
  EXPECT_EQ(read(second, 3), "top");
  EXPECT_EQ(KSV_2OLEclose(file_), 4096);
  EXPECT_EQ(KSV_2OLEcloseStream(second), 1);
}

TEST_F(OleHandles, tell_the_class_of_what_they_stand_for) {
  Ksv2Ole* storage = KSV_2OLEopenStorage(file_, "storage");
  Ksv2Ole* inner = KSV_2OLEopenStorage(storage, "inner");
  EXPECT_EQ(classId(file_), "0123456789abcdef");
  EXPECT_EQ(classId(storage), "ABCDEFGHIJKLMNOP");
  EXPECT_EQ(classId(inner), std::string(16, '\0'));
  EXPECT_EQ(KSV_2OLEGetClassID(file_, nullptr), 0);
  // A stream has none, whatever stands in its entry.
  Ksv2Ole* stream = KSV_2OLEopenStorage(file_, "top");
  EXPECT_EQ(classId(stream), std::string(16, '\0'));
  EXPECT_EQ(KSV_2OLEcloseStorage(stream), 1);
  EXPECT_EQ(KSV_2OLEcloseStorage(inner), 1);
  EXPECT_EQ(KSV_2OLEcloseStorage(storage), 1);
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
}

TEST_F(OleHandles, that_are_null_give_the_value_of_a_failure) {
  EXPECT_EQ(KSV_2OLEclose(nullptr), 4096);
  EXPECT_EQ(KSV_2OLEcloseStorage(nullptr), 0);
  EXPECT_EQ(KSV_2OLEcloseStream(nullptr), 0);
  EXPECT_EQ(KSV_2OLEopenStorage(nullptr, "x"), nullptr);
  EXPECT_EQ(KSV_2OLEopenStorage(file_, nullptr), nullptr);
  EXPECT_EQ(KSV_2OLEopenStream(nullptr, "x"), nullptr);
  EXPECT_EQ(KSV_2OLEopenStream(file_, nullptr), nullptr);
  EXPECT_EQ(ksvOleHeaderIsC(nullptr, 0, 0), 0xFFFFFFFFu);
  EXPECT_EQ(classId(nullptr), "result 0");
  char byte;
  EXPECT_EQ(KSV_2OLEreadStream(nullptr, &byte, 1), 0u);
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
}

TEST_F(OleHandles, give_their_file_back) {
  EXPECT_EQ(KSV_2OLEclose(file_), 1);
  writeFile("sound", writer_.write());
  const ptrdiff_t closed = openDescriptors();
  Ksv2Ole* file = KSV_2OLEopen("sound");
  Ksv2OleStream* stream = KSV_2OLEopenStream(file, "top");
  EXPECT_EQ(KSV_2OLEclose(file), 4096);
  // The stream is open, the file is not.
  EXPECT_EQ(openDescriptors(), closed);
  EXPECT_EQ(KSV_2OLEcloseStream(stream), 1);
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(opens("not a compound document"));
    EXPECT_TRUE(opens(writer_.write()));
  }
  EXPECT_EQ(openDescriptors(), closed);
}

}  // namespace
}  // namespace ksv::test
