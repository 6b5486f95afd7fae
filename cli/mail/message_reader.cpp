#include "cli/mail/message_reader.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include "cli/mail/mail_limits.h"
#include "cli/system/failure.h"

namespace ksv_cli {
namespace {

// What the mail reader calls. It is written in C, so what is thrown here waits until it is done.
class MessageBuilder {
 public:
  MessageBuilder(const MailCharsets& charsets, StoredMessage& stored, PartSaver* saver)
      : charsets_(charsets), stored_(stored), saver_(saver) {
    message_.index = stored.index();
    message_.offset = stored.offset();
    message_.size = stored.size();
    for (MailProblem& problem : stored.problems) addProblem(std::move(problem));
  }

  MailMessage read(const ksv_mail_reader& reader) {
    const ksv_mail_source source = {this, stored_.size(), readSource};
    const ksv_mail_visitor visitor = {this,       beginPart, header, content,
                                      endContent, endPart,   problem};
    const ksv_mail_limits bounds = {limits::kDeepestPart, limits::kMostParts};
    reader.read(&source, &visitor, &bounds);
    if (thrown_) std::rethrow_exception(thrown_);
    return std::move(message_);
  }

 private:
  static MessageBuilder& self(void* context) { return *static_cast<MessageBuilder*>(context); }

  template <typename Action>
  static ksv_mail_answer guarded(void* context, Action action) noexcept {
    MessageBuilder& builder = self(context);
    if (builder.thrown_) return KSV_MAIL_STOP;
    try {
      action(builder);
      return KSV_MAIL_GO_ON;
    } catch (...) {
      builder.thrown_ = std::current_exception();
      return KSV_MAIL_STOP;
    }
  }

  static size_t readSource(void* context, uint64_t offset, char* buffer, size_t size) {
    size_t count = 0;
    guarded(context,
            [&](MessageBuilder& builder) { count = builder.stored_.read(offset, buffer, size); });
    return count;
  }
  static ksv_mail_answer beginPart(void* context, const ksv_mail_part* part) {
    return guarded(context, [&](MessageBuilder& builder) {
      MailPart begun;
      begun.path = part->path;
      begun.type = part->type;
      begun.kind = static_cast<ksv_mail_kind>(part->kind);
      builder.message_.parts.push_back(std::move(begun));
      builder.hasContentBegun_ = false;
    });
  }
  static ksv_mail_answer header(void* context, const char* name, const char* value, int64_t) {
    return guarded(context, [&](MessageBuilder& builder) {
      builder.part().fields.push_back({name, unfolded(value)});
    });
  }
  static ksv_mail_answer content(void* context, const char* bytes, size_t size) {
    return guarded(context, [&](MessageBuilder& builder) { builder.takeContent({bytes, size}); });
  }
  static ksv_mail_answer endContent(void* context, const ksv_mail_content_end* end) {
    return guarded(context, [&](MessageBuilder& builder) { builder.endContentOfPart(*end); });
  }
  static ksv_mail_answer endPart(void*) { return KSV_MAIL_GO_ON; }
  static void problem(void* context, int64_t offset, const char* reason) {
    guarded(context, [&](MessageBuilder& builder) {
      MailProblem found{std::nullopt, reason};
      if (offset >= 0) found.offset = builder.stored_.placeInInput(static_cast<uint64_t>(offset));
      builder.addProblem(std::move(found));
    });
  }

  MailPart& part() { return message_.parts.back(); }

  // All fields of the part are known by now.
  void beginContent() {
    if (std::exchange(hasContentBegun_, true)) return;
    MailPart& part = this->part();
    part.charset = part.declaredCharset();
    if (!message_.charset) message_.charset = part.charset;
    FieldTexts texts(charsets_, message_.charset);
    part.fileName = fileNameOf(part, texts);
    part.isText = part.type.starts_with("text/") && part.disposition() != "attachment";
    if (saver_ != nullptr && part.fileName) file_ = saver_->begin(*part.fileName);
  }

  void takeContent(std::string_view bytes) {
    beginContent();
    if (file_) file_->write(bytes);
    if (!part().isText) return;
    const size_t taken = std::min(bytes.size(), limits::kMostTextOfMessage - textBytes_);
    part().content += bytes.substr(0, taken);
    part().isCutShort = taken < bytes.size();
    textBytes_ += taken;
  }

  void endContentOfPart(const ksv_mail_content_end& end) {
    beginContent();
    part().size = end.size;
    part().badBytes = end.bad_bytes;
    part().sha256 = end.sha256;
    if (file_) part().savedAs = file_->commit();
    file_.reset();
    if (end.bad_bytes != 0)
      addProblem({std::nullopt, "part " + part().path + " has " + std::to_string(end.bad_bytes) +
                                    " bytes that are not of its transfer encoding"});
    if (part().isCutShort)
      addProblem(
          {std::nullopt, "the text of part " + part().path + " is too long: the rest is left out"});
  }

  void addProblem(MailProblem problem) {
    const auto isSame = [&](const MailProblem& told) {
      return told.reason == problem.reason && told.offset == problem.offset;
    };
    if (std::ranges::any_of(message_.problems, isSame)) return;
    if (message_.problems.size() < limits::kMostToldProblems)
      message_.problems.push_back(std::move(problem));
    else
      ++message_.untoldProblems;
  }

  const MailCharsets& charsets_;
  StoredMessage& stored_;
  PartSaver* const saver_;
  MailMessage message_;
  size_t textBytes_ = 0;
  bool hasContentBegun_ = false;
  std::unique_ptr<PartSaver::File> file_;
  std::exception_ptr thrown_;
};

}  // namespace

MailMessage readMessage(const ksv_mail_reader& reader, const MailCharsets& charsets,
                        StoredMessage& stored, PartSaver* saver) {
  return MessageBuilder(charsets, stored, saver).read(reader);
}

}  // namespace ksv_cli
