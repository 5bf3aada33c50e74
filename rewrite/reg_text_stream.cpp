#include "rewrite/reg_text_stream.h"

#include <algorithm>

#include "rewrite/unit_text.h"

namespace carrovan {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{16} << 10;
constexpr std::size_t kMarkBytes = 2;

}  // namespace

bool RegTextStream::Take(std::string_view part) {
  std::size_t searched = form_ ? pending_.size() : 0;
  pending_.append(part);
  if (!form_ && pending_.size() >= kMarkBytes) Begin();
  if (!form_ || overLines_) return true;
  searched -= searched % form_->UnitBytes();
  const std::size_t end = LastLineEnd(pending_, searched, form_->UnitBytes());
  if (!EditLines(std::string_view(pending_).substr(0, end))) return false;
  pending_.erase(0, end);
  return true;
}

bool RegTextStream::Finish() {
  if (!form_) Begin();
  const std::size_t whole = pending_.size() - pending_.size() % form_->UnitBytes();
  if (!EditLines(std::string_view(pending_).substr(0, whole))) return false;
  output_.append(pending_, whole);
  return true;
}

std::string_view RegTextStream::TakeOutput() {
  given_.swap(output_);
  output_.clear();
  return given_;
}

void RegTextStream::Begin() {
  form_.emplace(pending_, codePage_);
  output_ = form_->Mark(pending_);
  pending_.erase(0, output_.size());
  std::optional<RegUser>& user = passes_.user;
  if (user && !form_->CanHold(user->rule.name)) user.reset();
  if (user && !form_->CanHold(user->profile)) user->profile.clear();
  overLines_ = std::ranges::any_of(passes_.replacements, [](const UnitReplacement& each) {
    return each.search.find(u'\n') != kNotFound;
  });
}

bool RegTextStream::EditLines(std::string_view lines) {
  const std::size_t blockBytes = overLines_ ? lines.size() : kBlockBytes;
  while (!lines.empty()) {
    if (!EditBlock(TakeWholeLines(lines, blockBytes, form_->UnitBytes()))) return false;
  }
  return true;
}

bool RegTextStream::EditBlock(std::string_view block) {
  form_->Decode(block, text_);
  const bool edited = Apply(text_);
  if (form_->IsUtf16()) return Emit<char16_t>(text_, edited);
  if (!edited) return Emit(block, edited);
  encoded_.clear();
  form_->AppendEncoded(text_, encoded_);
  return Emit<char>(encoded_, edited);
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

template <typename Char>
bool RegTextStream::Emit(std::basic_string_view<Char> lines, bool edited) {
  if (expected_ == RegFileFate::kLosesLines) {
    AppendOtherLines(lines, *form_, *passes_.paths, dropped_, output_);
    return true;
  }
  if (passes_.paths != nullptr && HoldsInvalidPath(lines, *form_, *passes_.paths)) {
    fate_ = RegFileFate::kLosesLines;
  } else if (edited) {
    fate_ = RegFileFate::kIsEdited;
  }
  if (expected_ == RegFileFate::kIsEdited) output_.append(BytesOf(lines));
  return fate_ == expected_;
}

}  // namespace carrovan
