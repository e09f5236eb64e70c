#include "tallybook/cli/ConsoleMessageBoxes.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "base/Texts.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Reasons.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

struct Button {
  Integer number;
  std::string_view word;   // as --answer takes it and --messages writes it
  std::string_view label;  // as the user sees it; its first letter chooses it
};

constexpr std::array kButtons = {Button{kOk, "ok", "OK"}, Button{kCancel, "cancel", "Cancel"},
                                 Button{kYes, "yes", "Yes"}, Button{kNo, "no", "No"}, Button{kRetry, "retry", "Retry"}};

const Button& ButtonOf(Integer number) {
  return *std::find_if(kButtons.begin(), kButtons.end(), [&](const Button& b) { return b.number == number; });
}

// The buttons of a box, in the order in which it shows them.
std::vector<Button> ButtonsOf(Long style) {
  switch (style & kButtonsMask) {
    case kOkCancel:
      return {ButtonOf(kOk), ButtonOf(kCancel)};
    case kYesNo:
      return {ButtonOf(kYes), ButtonOf(kNo)};
    case kRetryCancel:
      return {ButtonOf(kRetry), ButtonOf(kCancel)};
    default:
      return {ButtonOf(kOk)};
  }
}

Text IconName(Long style) {
  switch (style & kIconMask) {
    case kStopIcon:
      return "stop";
    case kQuestionIcon:
      return "question";
    case kExclamationIcon:
      return "exclamation";
    case kInformationIcon:
      return "information";
    default:
      return "";
  }
}

Text LabelsOf(Long style) {
  Text labels;
  for (const Button& button : ButtonsOf(style)) labels += (labels.empty() ? "" : "/") + Text(button.label);
  return labels;
}

// The lines of a box.
std::vector<Text> LinesOf(std::string_view text) {
  constexpr std::string_view kLineEnd = "\r\n";
  std::vector<Text> lines;
  for (std::size_t end = text.find(kLineEnd); end != Text::npos; end = text.find(kLineEnd)) {
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end + kLineEnd.size());
  }
  lines.emplace_back(text);
  return lines;
}

// An audit's error as one line: its lines trimmed and joined, without the question.
Text ErrorOnOneLine(std::string_view text) {
  text.remove_suffix(kContinueAuditQuestion.size());
  Text line;
  for (const Text& part : LinesOf(text)) {
    if (const Text trimmed = TrimBoth(part); !trimmed.empty()) line += (line.empty() ? "" : ". ") + trimmed;
  }
  return line;
}

// Below the first line the others stand further in, so that none can be taken for a message of its own.
void TellBox(const Text& caption, const Text& text, bool is_error) {
  const std::vector<Text> lines = LinesOf(text);
  TellUnder(caption, lines.front(), is_error);
  for (std::size_t i = 1; i < lines.size(); ++i) TellLine(lines[i].empty() ? Text() : "  " + lines[i]);
}

// A warning that asks is a question.
bool IsError(Long style) {
  const bool asks = (style & kButtonsMask) != kOkOnly;
  return (style & kIconMask) == kStopIcon || ((style & kIconMask) == kExclamationIcon && !asks);
}

}  // namespace

const std::vector<Text>& AnswerWords() {
  static const std::vector<Text> words = [] {
    std::vector<Text> all;
    all.reserve(kButtons.size());
    for (const Button& button : kButtons) all.emplace_back(button.word);
    return all;
  }();
  return words;
}

ConsoleMessageBoxes::ConsoleMessageBoxes(const AskOptions& options, ConsoleProgress& progress)
    : yes_(options.yes),
      keep_auditing_(options.keep_auditing),
      answers_(options.answers.begin(), options.answers.end()),
      messages_path_(options.messages_file),
      progress_(progress) {}

void ConsoleMessageBoxes::StartMessages() {
  if (messages_path_.empty() || messages_.is_open()) return;
  messages_.open(messages_path_, std::ios::trunc);
  messages_ << std::exchange(waiting_messages_, {}) << std::flush;
  if (!messages_) throw Failure(FailureNumber::kPathOrAccess, "The messages file cannot be made: " + messages_path_);
}

Integer ConsoleMessageBoxes::Show(const Text& text, Long style, const Text& caption) {
  const bool confirms = (style & kButtonsMask) == kOkCancel || (style & kButtonsMask) == kYesNo;
  constexpr std::size_t kRemembered = 16;
  shown_.push_back(text);
  if (shown_.size() > kRemembered) shown_.pop_front();
  const bool audits = text.ends_with(kContinueAuditQuestion);
  const Integer answer = audits ? AnswerAudit(text, style, caption) : Ask(text, style, caption);
  if (confirms && !audits && answer == RefusingButton(style)) refused_ = true;
  if (!messages_path_.empty()) Record(text, style, answer);
  return answer;
}

Integer ConsoleMessageBoxes::ShowToUser(const Text& text, Long style, const Text& caption) {
  if (!CanAsk()) return RefusingButton(style);
  progress_.Hide();
  const bool is_error = false;
  TellBox(caption, text, is_error);
  const Integer answer = AskOnTerminal(style);
  if (!messages_path_.empty()) Record(text, style, answer);
  return answer;
}

Integer ConsoleMessageBoxes::AnswerAudit(const Text& text, Long style, const Text& caption) {
  // The comma-separated import asks a second time, about the number 0, for one bad code: it is no further error.
  const bool repeated = text.starts_with("Invalid Account Number 0\r\n");
  if (!repeated) ++audit_errors_;
  if (!keep_auditing_) {
    const Integer answer = Ask(text, style, caption);
    audit_stopped_ = audit_stopped_ || answer != kYes;
    return answer;
  }
  if (repeated) return kYes;
  progress_.Hide();
  const bool is_error = true;
  TellUnder(caption, ErrorOnOneLine(text) + MissingRecord(text), is_error);
  return kYes;
}

Text ConsoleMessageBoxes::MissingRecord(const Text& text) const {
  constexpr std::string_view kRecord = "In record number";
  const bool told = text.find(kRecord) != Text::npos;
  if (told || audit_ == nullptr || audit_->asked_record == 0) return "";
  return fmt::format(". {}: {}", kRecord, audit_->asked_record);
}

Integer ConsoleMessageBoxes::Ask(const Text& text, Long style, const Text& caption) {
  progress_.Hide();
  TellBox(caption, text, IsError(style) || text.ends_with(kContinueAuditQuestion));
  const bool asks = (style & kButtonsMask) != kOkOnly;
  return asks ? Choose(style) : kOk;
}

std::optional<Integer> ConsoleMessageBoxes::GivenAnswer(Long style) {
  if (answers_.empty() && !yes_ && CanAsk()) return std::nullopt;
  Integer answer = RefusingButton(style);
  const auto has = [&](std::string_view word) {
    for (const Button& button : ButtonsOf(style)) {
      if (button.word != word) continue;
      answer = button.number;
      return true;
    }
    return false;
  };
  if (!answers_.empty()) {
    const Text word = answers_.front();
    answers_.pop_front();
    if (!has(word)) {
      misanswered_ = true;
      Warn(fmt::format("--answer '{}' is no button here", word));
    }
  } else if (yes_ && !has("ok")) {
    has("yes");
  }
  return answer;
}

void ConsoleMessageBoxes::NoteDialog(const Text& title, Integer answer, const Text& path) {
  if (answer == kCancel || !path.empty()) refused_ = answer == kCancel;
  if (!messages_path_.empty()) Record(title, kOkCancel, answer, path);
}

Integer ConsoleMessageBoxes::Choose(Long style) {
  const std::optional<Integer> answer = GivenAnswer(style);
  if (!answer) return AskOnTerminal(style);
  TellLine(fmt::format("  {}: {}", LabelsOf(style), ButtonOf(*answer).label));
  return *answer;
}

Integer ConsoleMessageBoxes::AskOnTerminal(Long style) {
  // Ctrl-C refuses here, also where the operation itself cannot be cancelled.
  const CancelKey key;
  const Integer refusing = RefusingButton(style);
  for (;;) {
    Prompt(fmt::format("  {} [{}]? ", LabelsOf(style), ButtonOf(refusing).label));
    const std::optional<Text> typed = ReadTypedLine();
    if (!typed) TellLine("");
    if (!typed || typed->empty()) return refusing;
    for (const Button& button : ButtonsOf(style)) {
      const char letter = static_cast<char>(button.word.front());
      if (typed->front() == letter || typed->front() == button.label.front()) return button.number;
    }
  }
}

bool ConsoleMessageBoxes::HasTold(const std::vector<Text>& words) const {
  return std::ranges::any_of(shown_, [&](const Text& text) {
    return std::ranges::all_of(words, [&](const Text& word) { return text.find(word) != Text::npos; });
  });
}

void ConsoleMessageBoxes::NoteReason(const Text& reason) {
  if (!messages_path_.empty()) WriteMessage(ReasonMessage(reason));
}

void ConsoleMessageBoxes::Record(const Text& text, Long style, Integer answer, const Text& path) {
  nlohmann::ordered_json box;
  box["text"] = text;
  box["icon"] = IconName(style);
  box["buttons"] = nlohmann::json::array();
  for (const Button& button : ButtonsOf(style)) box["buttons"].push_back(button.word);
  box["answer"] = ButtonOf(answer).word;
  if (!path.empty()) box["path"] = path;
  WriteMessage(box.dump());
}

void ConsoleMessageBoxes::WriteMessage(const Text& line) {
  if (!messages_.is_open()) {
    waiting_messages_ += line + "\n";
    return;
  }
  messages_ << line << std::endl;
  if (!messages_) throw Failure(FailureNumber::kDeviceError, "The messages file cannot be written: " + messages_path_);
}

}  // namespace tallybook::cli
