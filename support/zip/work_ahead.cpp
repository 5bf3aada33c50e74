#include "support/zip/work_ahead.h"

#include <new>

namespace carrovan {

LentMemory::LentMemory(std::size_t bytes)
    : sizeBytes_(bytes), bytes_(std::make_unique_for_overwrite<std::uint8_t[]>(bytes)) {}

std::optional<std::span<std::uint8_t>> LentMemory::Lend(std::size_t bytes) {
  if (bytes == 0) return std::span<std::uint8_t>();
  std::size_t begin = 0;
  for (const auto& [lentBegin, lentEnd] : lent_) {
    if (lentBegin - begin >= bytes) break;
    begin = lentEnd;
  }
  const auto next = lent_.lower_bound(begin);
  const std::size_t end = next == lent_.end() ? sizeBytes_ : next->first;
  if (end - begin < bytes) return std::nullopt;
  lent_.emplace(begin, begin + bytes);
  return std::span(bytes_.get() + begin, bytes);
}

std::span<std::uint8_t> LentMemory::Shorten(std::span<std::uint8_t> piece, std::size_t bytes) {
  if (piece.empty()) return piece;
  const auto at = lent_.find(static_cast<std::size_t>(piece.data() - bytes_.get()));
  if (bytes == 0) {
    lent_.erase(at);
    return {};
  }
  at->second = at->first + bytes;
  return piece.first(bytes);
}

WorkAhead::WorkAhead(unsigned threads, std::size_t memoryBytes)
    : mostThreads_(threads < 2 ? 0 : threads), memory_(memoryBytes) {
  threads_.reserve(mostThreads_);
}

WorkAhead::~WorkAhead() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  added_.notify_all();
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WorkAhead::Add(std::unique_ptr<Task> task) {
  // A thread takes about as long to start as such a number of small files takes.
  constexpr std::size_t kTasksPerThread = 2;
  std::size_t waiting = 0;
  {
    const std::lock_guard lock(mutex_);
    slots_.push_back({std::move(task), {}, nullptr, false});
    waiting = End() - nextToBegin_;
  }
  added_.notify_one();
  const bool isBusy = waiting > kTasksPerThread * (threads_.size() + 1);
  if (isBusy && threads_.size() < mostThreads_) StartThread();
}

void WorkAhead::StartThread() {
  try {
    threads_.emplace_back([this] { Work(); });
  } catch (const std::exception&) {
    // The threads that there are do the work, and whoever asks for a result.
  }
}

void WorkAhead::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    added_.wait(lock, [this] { return isEnding_ || nextToBegin_ < End(); });
    if (isEnding_) return;
    DoNext(lock);
  }
}

// Called and returns with the lock, which is open while the task runs.
void WorkAhead::DoNext(std::unique_lock<std::mutex>& lock) {
  const std::size_t number = nextToBegin_++;
  Slot& slot = slots_[number - first_];  // stays where it is while others come and go
  const auto unlocked = [&](auto step) {
    lock.unlock();
    std::size_t bytes = 0;
    try {
      bytes = step();
    } catch (...) {
      slot.failure = std::current_exception();
    }
    lock.lock();
    return bytes;
  };
  const std::size_t needed = unlocked([&] { return slot.task->Prepare(); });
  changed_.wait(lock, [&] { return isEnding_ || (nextToLend_ == number && Lend(slot, needed)); });
  ++nextToLend_;
  changed_.notify_all();
  std::size_t resultBytes = 0;
  if (!slot.failure && !isEnding_) {
    resultBytes = unlocked([&] { return slot.task->Run(slot.memory); });
  }
  slot.memory = memory_.Shorten(slot.memory, resultBytes);
  slot.isDone = true;
  changed_.notify_all();
}

// True also when there can never be so much.
bool WorkAhead::Lend(Slot& slot, std::size_t bytes) {
  if (bytes > memory_.SizeBytes()) {
    slot.failure = std::make_exception_ptr(std::bad_alloc());
    return true;
  }
  const auto piece = memory_.Lend(slot.failure ? 0 : bytes);
  if (piece) slot.memory = *piece;
  return piece.has_value();
}

std::span<const std::uint8_t> WorkAhead::FinishFirst() {
  std::unique_lock lock(mutex_);
  if (nextToBegin_ == first_) DoNext(lock);
  Slot& slot = slots_.front();
  changed_.wait(lock, [&] { return slot.isDone; });
  if (slot.failure) std::rethrow_exception(slot.failure);
  return slot.memory;
}

void WorkAhead::DropFirst() {
  std::unique_lock lock(mutex_);
  Slot& slot = slots_.front();
  if (nextToBegin_ == first_) {
    ++nextToBegin_;
    ++nextToLend_;
  } else {
    changed_.wait(lock, [&] { return slot.isDone; });
    memory_.Shorten(slot.memory, 0);
  }
  slots_.pop_front();
  ++first_;
  changed_.notify_all();
}

}  // namespace carrovan
