// ksv mail: mails and mailboxes as text, or as records.

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/charsets/loaded_rules.h"
#include "cli/jobs/jobs.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/options.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/verbosity.h"
#include "cli/jobs/work_list.h"
#include "cli/mail/mail_charsets.h"
#include "cli/mail/mail_folder.h"
#include "cli/mail/mail_output.h"
#include "cli/mail/mail_reader_module.h"
#include "cli/mail/mailbox.h"
#include "cli/mail/message_reader.h"
#include "cli/mail/part_saver.h"
#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/inputs.h"
#include "cli/text/output_charset.h"
#include "cli/text/policy_names.h"
#include "cli/text/text_language.h"

namespace ksv_cli {
namespace {

constexpr char kFooter[] =
    "FILE is a mail, a mailbox (mbox), or a directory with mails (Maildir, MH; with -r every\n"
    "file below it is one); none, or -, is standard input. A mail is shown with the fields\n"
    "that say most, its texts, and a line for each attachment. Every text and every field is\n"
    "read in its own charset: the one that it declares, if it is valid so, else the one that\n"
    "'ksv convert' would find out.\n"
    "\n"
    "WHICH is usual (From, To, Cc, Date, Subject and Message-ID), all, none, or names of\n"
    "fields with commas between.\n"
    "\n"
    "Of several mails each begins with a line of a form feed, the file, the number of the\n"
    "mail in it, and the byte at which it begins. What is damaged, and what is lost, is told\n"
    "on standard error; the rest of the mail is shown.\n"
    "\n"
    "Exit status: 0 all well, 1 at least one mail failed (or, with --strict, is damaged or\n"
    "lost something), 2 wrong usage, or no mail reader.";

struct Arguments {
  InputOptions inputs;
  std::string target = "UTF-8";
  std::string fields = "usual";
  std::optional<std::string> assumed;
  std::optional<std::string> detectLanguage;
  std::string invalid = "replace";
  std::string unmappable = "replace";
  std::optional<std::string> saveDirectory;
  bool json = false;
  bool strict = false;
  VerbosityOptions verbosity;
  uint64_t jobs = 1;
};

// Directories that are not entered are folders of mails. One that cannot be read stays in the row,
// and fails in its turn.
Inputs mailFiles(const InputOptions& options) {
  const Inputs named = inputsNamedBy(options);
  Inputs files;
  for (size_t i = 0; i < named.paths.size(); ++i) {
    const std::string& input = named.paths[i];
    try {
      if (inputFacts(input).kind == platform::FileKind::kDirectory) {
        for (std::string& file : filesOfMailFolder(input)) files.add(std::move(file));
        continue;
      }
    } catch (const Failure&) {
    }
    files.addFrom(named, i);
  }
  return files;
}

MailCharsetTerms charsetTerms(const Arguments& arguments) {
  MailCharsetTerms terms;
  terms.assumed = arguments.assumed;
  terms.invalid = policyOfName(arguments.invalid);
  terms.languageIsSupposed = !arguments.detectLanguage;
  terms.language = arguments.detectLanguage ? textLanguageNamed(*arguments.detectLanguage)
                                            : textLanguageOfUser();
  return terms;
}

OutputCharset outputCharset(const Arguments& arguments, const CharsetNames& names) {
  OutputCharset output(names, arguments.target, OutputCharset::Lacking::kIsShown);
  if (arguments.unmappable != "replace") output.setUnmappable(policyOfName(arguments.unmappable));
  return output;
}

class MailWork {
 public:
  MailWork(const Arguments& arguments, const ksv_mail_reader& reader, const Inputs& inputs,
           const CharsetNames& names)
      : arguments_(arguments),
        reader_(reader),
        files_(inputs.paths),
        charsets_(names, charsetTerms(arguments)),
        output_(outputCharset(arguments, names)),
        fields_(shownFieldsNamed(arguments.fields)),
        list_(inputs.paths, inputs.refused) {
    list_.tell(arguments.verbosity.chosen());
    if (arguments.json) list_.recordFailures([this](const auto& record) { return lineOf(record); });
  }

  int run() {
    if (arguments_.saveDirectory && !makeSaver()) return kExitFailed;
    return list_.run(arguments_.jobs, [this](size_t index) { showInput(index); });
  }

 private:
  bool makeSaver() {
    try {
      saver_ = std::make_unique<PartSaver>(*arguments_.saveDirectory);
      return true;
    } catch (const Failure& failure) {
      list_.console().report(*arguments_.saveDirectory, failure.what());
      return false;
    }
  }

  // A mail that fails does not keep the others from being shown.
  void showInput(size_t index) {
    const std::string& file = files_[index];
    if (inputFacts(file).kind == platform::FileKind::kDirectory) filesOfMailFolder(file);
    const std::unique_ptr<ByteSource> source = openInput(file);
    Mailbox mailbox(*source);
    bool isAllWell = true;
    while (const std::unique_ptr<StoredMessage> stored = mailbox.next()) {
      const Place place{index, *stored, mailbox.hasMessageLines()};
      try {
        isAllWell = show(place, *stored) && isAllWell;
      } catch (const Failure& failure) {
        if (failure.quiet()) throw;
        reportFailure(place, failure);
        isAllWell = false;
      }
    }
    list_.countWhole(index);
    if (!isAllWell) throw Failure("", true);
  }

  struct Place {
    size_t input;
    const StoredMessage& message;
    bool isInMailbox;
  };

  // False where something is wrong that counts as a failure.
  bool show(const Place& place, StoredMessage& stored) {
    const MailMessage message = readMessage(reader_, charsets_, stored, saver_.get());
    const uint64_t invalidBytes =
        arguments_.json ? writeRecord(place, message) : writeText(place, message);
    tellProblems(place, message);
    if (invalidBytes != 0)
      note(place, std::to_string(invalidBytes) +
                      (invalidBytes == 1 ? " invalid byte" : " invalid bytes") +
                      " skipped or replaced");
    return !arguments_.strict || (message.problems.empty() && invalidBytes == 0);
  }

  uint64_t writeRecord(const Place& place, const MailMessage& message) {
    RecordedMail mail =
        mailAsRecord(recordOf(files_[place.input], ResultForm::kFull), message, charsets_, reader_);
    list_.write(place.input, lineOf(mail.record));
    return mail.invalidBytes;
  }

  uint64_t writeText(const Place& place, const MailMessage& message) {
    const ShownMail mail = mailAsText(message, charsets_, fields_);
    if (!output_.holds(mail.text))
      note(place, "holds characters that are not in " + output_.display());
    list_.write(place.input, output_.encoded(headOf(place) + mail.text));
    return mail.invalidBytes;
  }

  // No text has a form feed of its own.
  std::string headOf(const Place& place) const {
    if (!place.isInMailbox && files_.size() == 1) return "";
    return "\f" + shownName(nameForMessages(files_[place.input])) + ": message " +
           std::to_string(place.message.index()) + ", offset " +
           std::to_string(place.message.offset()) + "\n";
  }

  std::string lineOf(const nlohmann::ordered_json& record) const {
    return output_.encoded(output_.hasEverything() ? jsonLine(record) : asciiJsonLine(record));
  }

  // What somebody has to know of a mail that is shown all the same.
  void note(const Place& place, const std::string& what) {
    if (arguments_.strict || !arguments_.verbosity.quiet) tell(place, what);
  }

  void tell(const Place& place, const std::string& what) {
    const std::string which =
        place.isInMailbox ? "message " + std::to_string(place.message.index()) + ": " : "";
    list_.console().report(nameForMessages(files_[place.input]), which + what);
  }

  void tellProblems(const Place& place, const MailMessage& message) {
    for (const MailProblem& problem : message.problems) {
      const std::string where =
          problem.offset ? " (offset " + std::to_string(*problem.offset) + ")" : "";
      note(place, problem.reason + where);
    }
    if (message.untoldProblems != 0)
      note(place, std::to_string(message.untoldProblems) + " more problems");
  }

  void reportFailure(const Place& place, const Failure& failure) {
    tell(place, failure.what());
    if (!arguments_.json) return;
    nlohmann::ordered_json record = failureRecord(files_[place.input], failure);
    record["message"] = place.message.index();
    list_.write(place.input, lineOf(record));
  }

  const Arguments& arguments_;
  const ksv_mail_reader& reader_;
  const std::vector<std::string>& files_;
  const MailCharsets charsets_;
  const OutputCharset output_;
  const ShownFields fields_;
  WorkList list_;
  std::unique_ptr<PartSaver> saver_;
};

int showMails(const Arguments& arguments) {
  const ksv_mail_reader& reader = loadedMailReader();
  const Inputs inputs = mailFiles(arguments.inputs);
  const RuleBase ruleBase;
  const CharsetNames names = ruleBase.names();
  return MailWork(arguments, reader, inputs, names).run();
}

void addCharsetOptions(Subcommand& job, Arguments& arguments) {
  job.value("-t,--to", "CHARSET", arguments.target, "Charset of the output; default: UTF-8");
  job.value("--charset", "CHARSET", arguments.assumed,
            "The charset of texts and fields that declare none");
  job.value("--detect-language", "NAME", arguments.detectLanguage,
            "The language of texts that declare none; default: that of LC_ALL, LC_CTYPE or LANG",
            {.oneOf = {"ja", "zh-cn", "zh-tw", "ko", "any"}, .ignoresCase = true});
  job.value("--invalid", "ACTION", arguments.invalid, "What invalid input does; default: replace",
            {.oneOf = {"fail", "skip", "replace", "hex", "decimal", "escape", "percent"}});
  job.value(
      "--unmappable", "ACTION", arguments.unmappable,
      "What a character does that the output lacks; default: replace",
      {.oneOf = {"fail", "skip", "replace", "hex", "decimal", "escape", "percent", "look-alike"}});
}

}  // namespace

void addMailJob(OptionParser& parser) {
  Subcommand job = parser.job(groups::kDocuments, "mail", "Show mails and mailboxes");
  auto arguments = std::make_shared<Arguments>();
  addInputs(job, arguments->inputs, "The mails; none, or -, is standard input");
  addCharsetOptions(job, *arguments);
  job.value("--headers", "WHICH", arguments->fields, "The fields to show; default: usual",
            {.usual = {"usual", "all", "none"}});
  job.value("--save", "DIR", arguments->saveDirectory,
            "Write the parts that have a file name to DIR");
  job.flag("--json", arguments->json, "One JSON object a line for each mail, with all there is");
  job.flag("--strict", arguments->strict,
           "Exit with 1 when a mail is damaged, or something was skipped or replaced");
  addVerbosity(job, arguments->verbosity, kTellsSums);
  job.workers(arguments->jobs, "Work on N files at once");
  job.footer(kFooter);
  job.work([arguments] { return showMails(*arguments); });
}

}  // namespace ksv_cli
