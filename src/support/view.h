// Neighbouring elements of a list that somebody else owns.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace weld {

// Reads a stretch of a list, be it of heap or of frame memory; valid as long as the list is neither changed nor
// gone.
template <typename T>
class TView {
public:
  using value_type = T;

  TView() = default;
  TView(const T* first, std::size_t elements) : begun(first), count(elements) {}
  template <typename TList, typename = std::enable_if_t<
                                std::is_convertible_v<decltype(std::declval<const TList&>().data()), const T*>>>
  // cppcheck-suppress noExplicitConstructor ; any list may be read through a view
  TView(const TList& list) : begun(list.data()), count(list.size()) {}

  const T* begin() const { return begun; }
  const T* end() const { return begun + count; }
  const T* data() const { return begun; }
  std::size_t size() const { return count; }
  bool empty() const { return count == 0; }
  const T& operator[](std::size_t i) const { return begun[i]; }
  const T& front() const { return begun[0]; }
  const T& back() const { return begun[count - 1]; }

  // The elements first .. first + elements - 1, which must be there.
  TView part(std::size_t first, std::size_t elements) const { return {begun + first, elements}; }

private:
  const T* begun = nullptr;
  std::size_t count = 0;
};

}  // namespace weld
