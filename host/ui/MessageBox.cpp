#include "host/ui/MessageBox.h"

#include <algorithm>
#include <cwctype>
#include <deque>
#include <mutex>

#include "host/config/Resources.h"
#include "host/notify/Log.h"
#include "host/ui/GlobManager.h"
#include "host/ui/PushButton.h"
#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int minTextWidth = 200;
constexpr int maxTextWidth = 420;

// Breaks the text into lines no wider than `width`, at blanks where it can
// and at explicit line breaks always. A word wider than a line gets a line of
// its own (the renderer ellipsizes it).
std::vector<LightweightString<wchar_t>> wrap(const std::wstring& text, int width) {
  std::vector<LightweightString<wchar_t>> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find(L'\n', start), text.size());
    std::wstring line;
    for (std::size_t at = start; at < end;) {
      std::size_t next = text.find(L' ', at);
      if (next == std::wstring::npos || next > end) next = end;
      const std::wstring word = text.substr(at, next - at);
      const std::wstring longer = line.empty() ? word : line + L' ' + word;
      if (!line.empty() && measureText(longer).x > width) {
        lines.emplace_back(line);
        line = word;
      } else {
        line = longer;
      }
      at = next + 1;
    }
    lines.emplace_back(line);
    start = end + 1;
  }
  return lines;
}

int widest(const std::vector<LightweightString<wchar_t>>& lines) {
  int w = 0;
  for (const auto& line : lines) w = std::max(w, measureText(line).x);
  return w;
}
} // namespace

MessagePanel::MessagePanel(const LightweightString<wchar_t>& text, const Palette& palette)
    : TextRowsPanel([&] {
        InitArgs args;
        args.palette = palette;
        args.creationInfo.border = getDefaultBorder();
        return args;
      }()) {
  const auto lines = wrap(text.str(), maxTextWidth);
  const int textWidth = std::clamp(widest(lines), minTextWidth, maxTextWidth);
  ok_ = new PushButton(resourceStrW(13020), okMsg, 80);
  setReserve(PushButton::calcHeight() + 2 * UifStd::getWidgetGap(), 0);
  resize(textWidth + 2 * borderSize() + 4 * UifStd::getWidgetGap(), heightFor(lines.size()));
  // Centred across, at the bottom of the user area.
  const PixelBox user = getUserArea();
  addChild(ok_, UserBottomLeft((user.x1 - user.x0 - ok_->width()) / 2, UifStd::getWidgetGap()));
  std::vector<Row> rows;
  for (const auto& line : lines) rows.push_back({line, {}, false});
  setRows(std::move(rows));
}

MessagePanel::~MessagePanel() = default;

bool MessagePanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  if (msg == okMsg && sender == ok_) {
    GlobManager::requestDeletion(this);
    return true;
  }
  return TextRowsPanel::handleMessageEvent(msg, sender);
}

QuestionPanel::QuestionPanel(const LightweightString<wchar_t>& text,
                             const std::vector<LightweightString<wchar_t>>& answers, Answered answered,
                             const Palette& palette)
    : TextRowsPanel([&] {
        InitArgs args;
        args.palette = palette;
        args.creationInfo.border = getDefaultBorder();
        return args;
      }()),
      answered_(std::move(answered)) {
  const int gap = UifStd::getWidgetGap();
  int buttonsWidth = 0;
  for (const auto& a : answers) {
    buttons_.push_back(new PushButton(a, answerMsg, std::max(80, PushButton::calcWidth(a))));
    buttonsWidth += buttons_.back()->width() + gap;
  }
  const auto lines = wrap(text.str(), maxTextWidth);
  const int textWidth = std::clamp(std::max(widest(lines), buttonsWidth), minTextWidth, 2 * maxTextWidth);
  setReserve(PushButton::calcHeight() + 2 * gap, 0);
  resize(textWidth + 2 * borderSize() + 4 * gap, heightFor(lines.size()));
  // A row centred across the bottom of the user area.
  const PixelBox user = getUserArea();
  int x = (user.x1 - user.x0 - buttonsWidth + gap) / 2;
  for (PushButton* b : buttons_) {
    addChild(b, UserBottomLeft(x, gap));
    x += b->width() + gap;
  }
  std::vector<Row> rows;
  for (const auto& line : lines) rows.push_back({line, {}, false});
  setRows(std::move(rows));
}

QuestionPanel::~QuestionPanel() {
  // Gone unanswered (its screen closed): the asker hears so.
  if (answered_) answered_(noAnswer);
}

void QuestionPanel::answer(int index) {
  if (index < 0 || index >= static_cast<int>(buttons_.size())) return;
  // Told once: the asker may ask again from its answer.
  Answered told = std::move(answered_);
  answered_ = nullptr;
  GlobManager::requestDeletion(this);
  if (told) told(index);
}

void QuestionPanel::withdraw() {
  answered_ = nullptr;
  GlobManager::requestDeletion(this);
}

bool QuestionPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  if (msg == answerMsg) {
    const auto it = std::find(buttons_.begin(), buttons_.end(), sender);
    if (it != buttons_.end()) {
      answer(static_cast<int>(it - buttons_.begin()));
      return true;
    }
  }
  return TextRowsPanel::handleMessageEvent(msg, sender);
}

bool QuestionPanel::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown || buttons_.empty()) return false;
  if (e.key == Event::keyReturn) {
    answer(0);
    return true;
  }
  if (e.key == Event::keyEscape) {
    answer(static_cast<int>(buttons_.size()) - 1);
    return true;
  }
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    const std::wstring label(buttons_[i]->getLabel().str());
    if (!label.empty() && e.key < 128 && std::towlower(label[0]) == std::towlower(static_cast<wchar_t>(e.key))) {
      answer(static_cast<int>(i));
      return true;
    }
  }
  return false;
}

namespace {
std::mutex shownMutex;
std::deque<LightweightString<wchar_t>> shown;

void remember(const LightweightString<wchar_t>& text) {
  std::lock_guard<std::mutex> lock(shownMutex);
  shown.push_back(text);
  if (shown.size() > 256) shown.pop_front();
}
} // namespace

std::vector<LightweightString<wchar_t>> messagesShown() {
  std::lock_guard<std::mutex> lock(shownMutex);
  return {shown.begin(), shown.end()};
}

MessagePanel* makeMessage(const LightweightString<wchar_t>& text, const Palette& palette) {
  remember(text);
  if (!GlobManager::initialised()) {
    Log::printf("message (no screen to show it on): %s", toUTF8(text).c_str());
    return nullptr;
  }
  auto* panel = new MessagePanel(text, palette);
  const XY<int> at = glib_getPosForWindow(panel->width(), panel->height());
  return TextRowsPanel::showOnScreen(panel, at) ? panel : nullptr;
}

QuestionPanel* askQuestion(const LightweightString<wchar_t>& text,
                           const std::vector<LightweightString<wchar_t>>& answers, QuestionPanel::Answered answered,
                           const Palette& palette) {
  remember(text);
  if (!GlobManager::initialised() || answers.empty()) {
    Log::printf("question (no screen to ask it on): %s", toUTF8(text).c_str());
    return nullptr;
  }
  auto* panel = new QuestionPanel(text, answers, std::move(answered), palette);
  const XY<int> at = glib_getPosForWindow(panel->width(), panel->height());
  if (!TextRowsPanel::showOnScreen(panel, at)) return nullptr;
  GlobManager::setModal(panel);
  return panel;
}
