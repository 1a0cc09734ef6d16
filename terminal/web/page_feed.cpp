// SPDX-License-Identifier: MIT
#include "web/page_feed.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "web/messages.h"
#include "web/stored_files.h"

namespace gwq::terminal::web {
namespace {

void AddIfNew(std::vector<std::string>& news, std::string& told, std::string message) {
  if (message == told) return;
  told = std::move(message);
  news.push_back(told);
}

}  // namespace

// Files only change when the host says something, or the customer.
std::vector<std::string> PageFeed::News() {
  const std::vector<device::TraceEvent> events = trace_.Take();
  Messages news;
  AddScreen(news);
  AddEntry(news);
  AddLink(news);
  if (events.empty() && !told_.files.empty()) return news;
  AddFiles(news);
  AddTrace(news, events);
  return news;
}

std::vector<std::string> PageFeed::ShownAgain() {
  told_.screen.clear();
  told_.entry.clear();
  Messages news;
  AddScreen(news);
  AddEntry(news);
  return news;
}

std::vector<std::string> PageFeed::Background() const {
  return {told_.link, told_.files, TraceMessage({lines_.begin(), lines_.end()})};
}

void PageFeed::AddScreen(Messages& news) {
  std::optional<ShownScreen> shown;
  terminal_.use([&](device::Device& device, Time now) {
    const std::uint64_t number = device.ScreenChanges();
    if (number == told_.screen_number && !told_.screen.empty()) return;
    const auto closes_at = device.ScreenClosesAt();
    shown = {number, device.CurrentScreen(), closes_at ? std::max(*closes_at - now, Time{1}) : Time{0}};
  });
  if (!shown) return;
  told_.screen_number = shown->number;
  AddIfNew(news, told_.screen, ScreenMessage(*shown));
}

void PageFeed::AddEntry(Messages& news) {
  std::optional<device::EntryState> entry;
  Time now{0};
  terminal_.use([&](device::Device& device, Time time) {
    entry = device.CurrentEntry();
    now = time;
  });
  const device::EntryState state = entry.value_or(device::EntryState{});
  const bool same =
      state.number == told_.entry_number && state.keyed == told_.keyed && state.shown == told_.shown;
  if (same && !told_.entry.empty()) return;
  told_.entry_number = state.number;
  told_.keyed = state.keyed;
  told_.shown = state.shown;
  AddIfNew(news, told_.entry, EntryMessage(entry, now));
}

void PageFeed::AddLink(Messages& news) {
  AddIfNew(news, told_.link,
           LinkMessage(terminal_.is_plugged(), static_cast<bool>(terminal_.plug), terminal_.rates));
}

void PageFeed::AddFiles(Messages& news) {
  std::vector<std::string> paths;
  terminal_.use([&paths](device::Device& device, Time) { paths = StoredFiles(device.Files()); });
  AddIfNew(news, told_.files, FilesMessage(paths));
}

void PageFeed::AddTrace(Messages& news, const std::vector<device::TraceEvent>& events) {
  lines_.insert(lines_.end(), events.begin(), events.end());
  while (lines_.size() > kMaxTraceLines) lines_.pop_front();
  news.push_back(TraceMessage(events));
}

}  // namespace gwq::terminal::web
