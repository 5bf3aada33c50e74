#include "rewrite/reg_text_stream.h"

#include <algorithm>

#include "platform/large_buffer.h"
#include "rewrite/unit_text.h"

namespace carrovan {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
constexpr std::size_t kMarkBytes = 2;

}  // namespace

void RegTextStream::Take(std::string_view part, std::uint64_t fileBytes) {
  if (result_.capacity() < fileBytes) {
    // What is not used of this costs nothing; growing step by step would copy it often.
    result_.reserve(static_cast<std::size_t>(fileBytes + fileBytes / 4));
    ExpectToFill(result_.data(), result_.capacity());
  }
  std::size_t searched = form_ ? pending_.size() : 0;
  pending_.append(part);
  if (!form_ && pending_.size() >= kMarkBytes) Begin();
  if (!form_ || overLines_) return;
  searched -= searched % form_->UnitBytes();
  const std::size_t end = LastLineEnd(pending_, searched, form_->UnitBytes());
  EditLines(std::string_view(pending_).substr(0, end));
  pending_.erase(0, end);
}

void RegTextStream::Finish() {
  if (!form_) Begin();
  const std::size_t whole = pending_.size() - pending_.size() % form_->UnitBytes();
  EditLines(std::string_view(pending_).substr(0, whole));
  result_.append(pending_, whole);
  pending_.clear();
}

void RegTextStream::Begin() {
  form_.emplace(pending_, codePage_);
  result_ = form_->Mark(pending_);
  pending_.erase(0, result_.size());
  std::optional<RegUser>& user = passes_.user;
  if (user && !form_->CanHold(user->rule.name)) user.reset();
  if (user && !form_->CanHold(user->profile)) user->profile.clear();
  overLines_ = std::ranges::any_of(passes_.replacements, [](const UnitReplacement& each) {
    return each.search.find(u'\n') != kNotFound;
  });
}

void RegTextStream::EditLines(std::string_view lines) {
  const std::size_t blockBytes = overLines_ ? lines.size() : kBlockBytes;
  std::u16string text;
  while (!lines.empty()) {
    const std::string_view block = TakeWholeLines(lines, blockBytes, form_->UnitBytes());
    form_->Decode(block, text);
    if (Apply(text)) {
      form_->AppendEncoded(text, result_);
      changed_ = true;
    } else {
      result_ += block;
    }
  }
}

// Whether the text was changed.
bool RegTextStream::Apply(std::u16string& text) {
  std::size_t count = 0;
  for (const UnitReplacement& each : passes_.replacements) {
    count += ReplaceUnits(text, each.search, each.replacement);
  }
  if (!passes_.user) return count > 0;
  std::size_t users = ReplaceUserNames(text, passes_.user->rule);
  if (!passes_.user->profile.empty()) {
    users += ReplaceUnits(text, u"%USERPROFILE%", passes_.user->profile);
  }
  userPaths_ += users;
  return count + users > 0;
}

}  // namespace carrovan
