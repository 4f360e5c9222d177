// Working memory that outlives a frame, so that the frames after the first ones need no heap.
#pragma once

#include "zelWeldDetect.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <tuple>
#include <utility>
#include <vector>

namespace weld {

// Lists of one kind that nobody uses, with their memory. All of them get the room of the largest, so that it does
// not matter which of them is taken for what.
template <typename T>
class TSpareLists {
public:
  // An empty list with room for `count` elements.
  std::vector<T> take(std::size_t count) {
    std::vector<T> list;
    if (!others.empty()) {
      list.swap(others.back());
      others.pop_back();
    } else if (fewCount > 0) {
      list.swap(few[--fewCount]);
    }
    while (room < count) room = std::max(kSmallestRoom, 2 * room);
    list.reserve(room);
    return list;
  }

  // Frees the list where there is no memory to remember it.
  void give(std::vector<T>& list) noexcept {
    if (list.capacity() == 0) return;
    room = std::max(room, list.capacity());
    list.clear();
    if (fewCount < few.size()) {
      few[fewCount++].swap(list);
      return;
    }
    try {
      others.push_back(std::move(list));
    } catch (const std::bad_alloc&) {
      std::vector<T>().swap(list);
    }
  }

private:
  static constexpr std::size_t kSmallestRoom = 64;  // elements; doubles, so that a little more needs no new memory

  std::array<std::vector<T>, 8> few;  // without memory of its own
  std::size_t fewCount = 0;
  std::vector<std::vector<T>> others;
  std::size_t room = 0;
};

// Takes lists of the library's records out of spare ones and gives them back. Use it through TLent.
class TScratch {
public:
  TScratch() = default;
  TScratch(const TScratch&) = delete;  // lent lists know their scratch memory by its address
  TScratch& operator=(const TScratch&) = delete;

  // Lists with room for `count` elements; new ones without scratch memory.
  template <typename T>
  static void take(TScratch* scratch, std::vector<T>& list, std::size_t count) {
    if (scratch != nullptr) list = scratch->spareOf<T>().take(count);
    list.reserve(count);
  }
  static void take(TScratch* scratch, TLinePara& line, std::size_t count) { take(scratch, line.inlierPts, count); }
  static void take(TScratch* scratch, TStripePiece& piece, std::size_t count) {
    take(scratch, piece.pts, count);
    take(scratch, piece.fitPts, count);
  }

  template <typename T>
  void give(std::vector<T>& list) noexcept {
    spareOf<T>().give(list);
  }
  void give(std::vector<TStripePiece>& pieces) noexcept {
    for (TStripePiece& piece : pieces) give(piece);
    spareOf<TStripePiece>().give(pieces);
  }
  void give(TLinePara& line) noexcept { give(line.inlierPts); }
  void give(TStripePiece& piece) noexcept {
    give(piece.pts);
    give(piece.fitPts);
  }

private:
  template <typename T>
  TSpareLists<T>& spareOf() {
    return std::get<TSpareLists<T>>(spares);
  }

  std::tuple<TSpareLists<cv::Point2f>, TSpareLists<cv::Point>, TSpareLists<cv::Rect>, TSpareLists<float>,
             TSpareLists<int>, TSpareLists<unsigned char>, TSpareLists<TWeldPointStatus>,
             TSpareLists<TStripePiece>>
      spares;
};

// A list or a record of lists that comes from scratch memory, which must outlive it, and goes back there with the
// end of its life. Without scratch memory, and as a copy, an ordinary one.
template <typename TRecord>
class TLent : public TRecord {
public:
  TLent() = default;
  // Empty lists with room for `count` elements.
  TLent(TScratch* scratch, std::size_t count) : owner(scratch) {
    TScratch::take(scratch, static_cast<TRecord&>(*this), count);
  }
  // Takes over lists that came from the scratch memory.
  TLent(TScratch* scratch, TRecord&& record) noexcept : TRecord(std::move(record)), owner(scratch) {}
  // cppcheck-suppress noExplicitConstructor ; any record may stand for one that was not lent
  TLent(TRecord record) : TRecord(std::move(record)) {}
  TLent(const TLent& other) : TRecord(other) {}
  TLent(TLent&& other) noexcept : TRecord(std::move(other)), owner(other.owner) {}
  TLent& operator=(TLent other) noexcept {
    std::swap(static_cast<TRecord&>(*this), static_cast<TRecord&>(other));
    std::swap(owner, other.owner);
    return *this;
  }
  ~TLent() {
    if (owner != nullptr) owner->give(static_cast<TRecord&>(*this));
  }

private:
  TScratch* owner = nullptr;
};

template <typename T>
using TLentList = TLent<std::vector<T>>;

}  // namespace weld
