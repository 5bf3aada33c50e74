#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <utility>
#include <vector>

namespace carrovan {

// Memory that is lent in pieces. A piece lies as far in front as there is room, so that no more of
// it is touched than is lent at a time.
class LentMemory {
 public:
  explicit LentMemory(std::size_t bytes);

  std::size_t SizeBytes() const { return sizeBytes_; }

  // Nothing while no room is large enough. With nothing lent, any piece up to the whole fits.
  std::optional<std::span<std::uint8_t>> Lend(std::size_t bytes);

  // Takes back what is behind so many bytes; all of it for none.
  std::span<std::uint8_t> Shorten(std::span<std::uint8_t> piece, std::size_t bytes);

 private:
  std::size_t sizeBytes_;
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::map<std::size_t, std::size_t> lent_;  // where pieces begin and end
};

// Things of which every thread needs one at a time and which are too dear to be made each time.
template <typename Tool>
class ToolBox {
 public:
  // `make` gives a std::unique_ptr of a tool.
  template <typename Make>
  Tool Take(Make make) {
    {
      const std::lock_guard lock(mutex_);
      if (!tools_.empty()) {
        Tool tool = std::move(tools_.back());
        tools_.pop_back();
        return tool;
      }
    }
    return make();
  }

  void PutBack(Tool tool) {
    const std::lock_guard lock(mutex_);
    tools_.push_back(std::move(tool));
  }

 private:
  std::mutex mutex_;
  std::vector<Tool> tools_;
};

// Tasks that threads do ahead of whoever takes the results, which are taken in the order in which
// the tasks were added. How many threads there are changes nothing but the time: without any, each
// task is done when its result is asked for. Used by one thread.
class WorkAhead {
 public:
  class Task {
   public:
    virtual ~Task() = default;

    // Comes first; how many bytes of memory the task needs, at most all that there is.
    virtual std::size_t Prepare() = 0;

    // How many bytes from the memory's beginning are the result.
    virtual std::size_t Run(std::span<std::uint8_t> memory) = 0;
  };

  // With fewer than two threads everything is done by whoever asks. Threads are started when there
  // is enough to do for them; where the system gives none, the others do the work.
  WorkAhead(unsigned threads, std::size_t memoryBytes);

  // Tasks that are being done are waited for, others are dropped.
  ~WorkAhead();
  WorkAhead(const WorkAhead&) = delete;
  WorkAhead& operator=(const WorkAhead&) = delete;

  void Add(std::unique_ptr<Task> task);

  // Waits until the oldest task is done, or does it; its result lies there until it is dropped.
  // Throws what the task has thrown. Not without tasks.
  std::span<const std::uint8_t> FinishFirst();

  // Removes the oldest task. One that nobody has begun is not done.
  void DropFirst();

 private:
  struct Slot {
    std::unique_ptr<Task> task;
    std::span<std::uint8_t> memory;  // lent; once it is done, the result
    std::exception_ptr failure;
    bool isDone = false;
  };

  void StartThread();
  void Work();
  void DoNext(std::unique_lock<std::mutex>& lock);
  bool Lend(Slot& slot, std::size_t bytes);
  std::size_t End() const { return first_ + slots_.size(); }

  const std::size_t mostThreads_;
  std::mutex mutex_;  // of all that follows but the threads
  std::condition_variable added_;
  std::condition_variable changed_;
  LentMemory memory_;
  std::deque<Slot> slots_;
  // Tasks are numbered as they are added. They are begun and are lent memory in their order, so
  // that the oldest never waits for memory that younger ones have.
  std::size_t first_ = 0;  // in the slots
  std::size_t nextToBegin_ = 0;
  std::size_t nextToLend_ = 0;
  bool isEnding_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace carrovan
