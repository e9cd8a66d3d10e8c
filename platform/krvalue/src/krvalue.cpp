#include <kr/krvalue.h>

#include <climits>
#include <functional>
#include <new>
#include <stdexcept>

namespace KR {

using detail::KRValueArrayBlock;

namespace {

// Arrays are indexed with int, so no array grows beyond INT_MAX elements.
constexpr std::uint32_t kMaxArraySize = INT_MAX;

// The block every empty array starts from. Its capacity of 0 marks it as
// shared: it is never written and never freed.
const KRValueArrayBlock gEmptyBlock = {0, 0};

static_assert(sizeof(KRValue) == 16, "a KRValue is 16 bytes");
static_assert(sizeof(KRValueArrayBlock) % alignof(KRValue) == 0,
              "array elements follow the block header, aligned");

[[noreturn]] void throwTooLarge(std::uint64_t n) {
  throw std::runtime_error("KRValue: an array of " + std::to_string(n) +
                           " elements is larger than the maximum of " +
                           std::to_string(kMaxArraySize));
}

// "an int", "a string": a kind's name with its article, for messages.
std::string withArticle(KRValue::Type type) {
  const bool vowel = type == KRValue::TypeInvalid || type == KRValue::TypeInt ||
                     type == KRValue::TypeArray;
  return std::string(vowel ? "an " : "a ") + KRValue::typeName(type);
}

[[noreturn]] void throwCannotPushOnto(KRValue::Type type) {
  throw std::runtime_error("KRValue: cannot append an element to " + withArticle(type) +
                           " value");
}

// A block with room for `capacity` elements and none constructed.
KRValueArrayBlock* allocateBlock(std::uint32_t capacity) {
  if (capacity == 0) {
    return const_cast<KRValueArrayBlock*>(&gEmptyBlock);
  }
  void* memory = ::operator new(sizeof(KRValueArrayBlock) +
                                std::size_t(capacity) * sizeof(KRValue));
  return new (memory) KRValueArrayBlock{0, capacity};
}

void freeBlock(KRValueArrayBlock* block) noexcept {
  if (block->capacity != 0) {
    ::operator delete(block);
  }
}

// A stack that keeps its first frames inline, so that walking the shallow
// values of everyday use allocates nothing, and moves to the heap for deep ones.
template <typename Frame>
class WalkStack {
 public:
  bool empty() const noexcept { return size_ == 0; }
  Frame& top() noexcept { return size_ <= kInline ? inline_[size_ - 1] : heap_.back(); }
  void push(const Frame& frame) {
    if (size_ < kInline) {
      inline_[size_] = frame;
    } else {
      heap_.push_back(frame);
    }
    ++size_;
  }
  void pop() noexcept {
    if (size_ > kInline) {
      heap_.pop_back();
    }
    --size_;
  }

 private:
  static constexpr std::size_t kInline = 32;
  Frame inline_[kInline];
  std::vector<Frame> heap_;
  std::size_t size_ = 0;
};

}  // namespace

// Everything that needs the private representation.
struct KRValueImpl {
  static KRValue makeArray(KRValueArrayBlock* block) noexcept {
    KRValue v;
    v.type_ = KRValue::TypeArray;
    v.payload_.a = block;
    return v;
  }

  static KRValueArrayBlock* block(const KRValue& v) noexcept { return v.payload_.a; }

  // Destroys a whole array tree without recursion. While a child array is
  // being destroyed, the element of its parent that held it stores the link
  // to the grandparent instead (pointer reversal), so no stack is needed and
  // nothing is allocated.
  static void destroyBlock(KRValueArrayBlock* root) noexcept {
    KRValueArrayBlock* parent = nullptr;
    KRValueArrayBlock* current = root;
    for (;;) {
      bool descended = false;
      while (current->size > 0) {
        KRValue& last = current->elements()[current->size - 1];
        if (last.type_ == KRValue::TypeArray && last.payload_.a->capacity != 0) {
          KRValueArrayBlock* child = last.payload_.a;
          last.payload_.a = parent;
          parent = current;
          current = child;
          descended = true;
          break;
        }
        if (last.type_ == KRValue::TypeString) {
          delete last.payload_.s;
        }
        --current->size;
      }
      if (descended) {
        continue;
      }
      freeBlock(current);
      if (parent == nullptr) {
        return;
      }
      KRValue& link = parent->elements()[parent->size - 1];
      KRValueArrayBlock* grandparent = link.payload_.a;
      --parent->size;
      current = parent;
      parent = grandparent;
    }
  }

  // Copies a non-array value into raw storage.
  static void copyLeaf(const KRValue& from, KRValue* to) {
    if (from.type_ == KRValue::TypeString) {
      new (to) KRValue(*from.payload_.s);
      return;
    }
    new (to) KRValue();
    to->type_ = from.type_;
    to->payload_ = from.payload_;
  }

  // Deep copy of an array tree without recursion. The copy is always a
  // complete tree (a block's size counts only its constructed elements), so a
  // failed allocation half-way destroys what was made and rethrows.
  static KRValueArrayBlock* copyBlock(const KRValueArrayBlock* source) {
    KRValueArrayBlock* root = allocateBlock(source->size);
    if (source->size == 0) {
      return root;
    }
    struct Frame {
      const KRValueArrayBlock* from;
      KRValueArrayBlock* to;
    };
    try {
      WalkStack<Frame> stack;
      stack.push({source, root});
      while (!stack.empty()) {
        const Frame frame = stack.top();
        bool descended = false;
        while (frame.to->size < frame.from->size) {
          const KRValue& element = frame.from->elements()[frame.to->size];
          KRValue* out = frame.to->elements() + frame.to->size;
          if (element.type_ == KRValue::TypeArray && element.payload_.a->size != 0) {
            KRValueArrayBlock* child = allocateBlock(element.payload_.a->size);
            new (out) KRValue(makeArray(child));
            ++frame.to->size;
            stack.push({element.payload_.a, child});
            descended = true;
            break;
          }
          if (element.type_ == KRValue::TypeArray) {
            new (out) KRValue(makeArray(allocateBlock(0)));
          } else {
            copyLeaf(element, out);
          }
          ++frame.to->size;
        }
        if (!descended) {
          stack.pop();
        }
      }
    } catch (...) {
      destroyBlock(root);
      throw;
    }
    return root;
  }

  static bool leafEqual(const KRValue& a, const KRValue& b) noexcept {
    switch (a.type_) {
      case KRValue::TypeInvalid:
        return true;
      case KRValue::TypeBool:
        return a.payload_.b == b.payload_.b;
      case KRValue::TypeInt:
        return a.payload_.i == b.payload_.i;
      case KRValue::TypeFloat:
        return a.payload_.f == b.payload_.f;
      case KRValue::TypeString:
        return *a.payload_.s == *b.payload_.s;
      case KRValue::TypeArray:
        break;
    }
    return false;
  }

  // Structural equality of two array trees without recursion.
  static bool equalBlocks(const KRValueArrayBlock* a, const KRValueArrayBlock* b) {
    struct Frame {
      const KRValueArrayBlock* a;
      const KRValueArrayBlock* b;
      std::uint32_t next;
    };
    if (a->size != b->size) {
      return false;
    }
    WalkStack<Frame> stack;
    stack.push({a, b, 0});
    while (!stack.empty()) {
      Frame& frame = stack.top();
      if (frame.next == frame.a->size) {
        stack.pop();
        continue;
      }
      const KRValue& x = frame.a->elements()[frame.next];
      const KRValue& y = frame.b->elements()[frame.next];
      ++frame.next;
      if (x.type_ != y.type_) {
        return false;
      }
      if (x.type_ != KRValue::TypeArray) {
        if (!leafEqual(x, y)) {
          return false;
        }
        continue;
      }
      if (x.payload_.a->size != y.payload_.a->size) {
        return false;
      }
      if (x.payload_.a->size != 0 && x.payload_.a != y.payload_.a) {
        stack.push({x.payload_.a, y.payload_.a, 0});
      }
    }
    return true;
  }

  // Moves the elements of `from` into a new block of `capacity`; frees `from`.
  static KRValueArrayBlock* regrow(KRValueArrayBlock* from, std::uint32_t capacity) {
    KRValueArrayBlock* to = allocateBlock(capacity);
    KRValue* source = from->elements();
    KRValue* target = to->elements();
    for (std::uint32_t i = 0; i < from->size; ++i) {
      new (target + i) KRValue(std::move(source[i]));
    }
    to->size = from->size;
    freeBlock(from);
    return to;
  }

  static KRValueArrayBlock* fromStrings(const std::vector<std::string>& strings) {
    if (strings.size() > kMaxArraySize) {
      throwTooLarge(strings.size());
    }
    KRValueArrayBlock* block = allocateBlock(static_cast<std::uint32_t>(strings.size()));
    try {
      for (const std::string& s : strings) {
        new (block->elements() + block->size) KRValue(s);
        ++block->size;
      }
    } catch (...) {
      destroyBlock(block);
      throw;
    }
    return block;
  }
};

KRValue::KRValue(const std::string& s) : type_(TypeString) {
  payload_.s = new std::string(s);
}

KRValue::KRValue(std::string&& s) : type_(TypeString) {
  payload_.s = new std::string(std::move(s));
}

KRValue::KRValue(const char* s) : type_(TypeString) {
  payload_.s = new std::string(s == nullptr ? "" : s);
}

KRValue::KRValue(const std::vector<float>& floats) : type_(TypeArray) {
  if (floats.size() > kMaxArraySize) {
    throwTooLarge(floats.size());
  }
  KRValueArrayBlock* block = allocateBlock(static_cast<std::uint32_t>(floats.size()));
  KRValue* out = block->elements();
  for (float f : floats) {
    new (out++) KRValue(f);
  }
  if (!floats.empty()) {
    block->size = block->capacity;
  }
  payload_.a = block;
}

KRValue KRValue::arrayMovedFrom(KRValue* first, KRValue* last) {
  const std::size_t count = static_cast<std::size_t>(last - first);
  if (count > kMaxArraySize) {
    throwTooLarge(count);
  }
  KRValueArrayBlock* block = allocateBlock(static_cast<std::uint32_t>(count));
  KRValue* out = block->elements();
  for (KRValue* in = first; in != last; ++in) {
    new (out++) KRValue(std::move(*in));
  }
  if (count != 0) {
    block->size = block->capacity;
  }
  return KRValueImpl::makeArray(block);
}

KRValue::KRValue(const std::vector<std::string>& strings) : type_(TypeArray) {
  payload_.a = KRValueImpl::fromStrings(strings);
}

KRValue::KRValue(const KRValue& other) : payload_(other.payload_), type_(other.type_) {
  if (type_ == TypeString) {
    payload_.s = new std::string(*other.payload_.s);
  } else if (type_ == TypeArray) {
    payload_.a = KRValueImpl::copyBlock(other.payload_.a);
  }
}

KRValue& KRValue::operator=(const KRValue& other) {
  if (this != &other) {
    KRValue copy(other);
    swap(copy);
  }
  return *this;
}

KRValue& KRValue::operator=(const std::string& s) {
  KRValue v(s);
  swap(v);
  return *this;
}

KRValue& KRValue::operator=(const char* s) {
  KRValue v(s);
  swap(v);
  return *this;
}

void KRValue::release() noexcept {
  if (type_ == TypeString) {
    delete payload_.s;
  } else if (type_ == TypeArray) {
    KRValueImpl::destroyBlock(payload_.a);
  }
  type_ = TypeInvalid;
}

void KRValue::arraySetSize(int n) {
  if (n < 0) {
    throw std::runtime_error("KRValue: cannot make an array of negative size " +
                             std::to_string(n));
  }
  const std::uint32_t size = static_cast<std::uint32_t>(n);
  if (type_ != TypeArray) {
    KRValueArrayBlock* block = allocateBlock(size);
    KRValue* out = block->elements();
    for (std::uint32_t i = 0; i < size; ++i) {
      new (out + i) KRValue();
    }
    if (size != 0) {
      block->size = size;
    }
    KRValue fresh = KRValueImpl::makeArray(block);
    swap(fresh);
    return;
  }
  KRValueArrayBlock* block = payload_.a;
  if (size <= block->size) {
    while (block->size > size) {
      // Destroy the dropped elements one by one; each destruction is flat.
      block->elements()[block->size - 1].~KRValue();
      --block->size;
    }
    return;
  }
  if (size > block->capacity) {
    payload_.a = block = KRValueImpl::regrow(block, size);
  }
  for (std::uint32_t i = block->size; i < size; ++i) {
    new (block->elements() + i) KRValue();
  }
  block->size = size;
}

void KRValue::arrayReserve(int n) {
  if (type_ == TypeInvalid) {
    *this = KRValueImpl::makeArray(allocateBlock(0));
  } else if (type_ != TypeArray) {
    throwCannotPushOnto(type_);
  }
  if (n > 0 && static_cast<std::uint32_t>(n) > payload_.a->capacity) {
    payload_.a = KRValueImpl::regrow(payload_.a, static_cast<std::uint32_t>(n));
  }
}

void KRValue::growForPush() {
  if (type_ == TypeInvalid) {
    *this = KRValueImpl::makeArray(allocateBlock(0));
  } else if (type_ != TypeArray) {
    throwCannotPushOnto(type_);
  }
  KRValueArrayBlock* block = payload_.a;
  if (block->size < block->capacity) {
    return;
  }
  if (block->size == kMaxArraySize) {
    throwTooLarge(std::uint64_t(kMaxArraySize) + 1);
  }
  std::uint64_t capacity = block->capacity < 4 ? 4 : std::uint64_t(block->capacity) * 2;
  if (capacity > kMaxArraySize) {
    capacity = kMaxArraySize;
  }
  payload_.a = KRValueImpl::regrow(block, static_cast<std::uint32_t>(capacity));
}

void KRValue::arrayPush(const KRValue& element) {
  // Copy first: `element` may live inside this array and move when it grows.
  arrayPush(KRValue(element));
}

void KRValue::arrayPush(KRValue&& element) {
  if (&element == this) {
    KRValue moved(std::move(element));
    arrayPush(std::move(moved));
    return;
  }
  // An element of this array moves when the array grows; take it out first.
  if (type_ == TypeArray && payload_.a->size != 0 &&
      !std::less<const KRValue*>()(&element, payload_.a->elements()) &&
      std::less<const KRValue*>()(&element, payload_.a->elements() + payload_.a->size)) {
    KRValue moved(std::move(element));
    arrayPush(std::move(moved));
    return;
  }
  growForPush();
  KRValueArrayBlock* block = payload_.a;
  new (block->elements() + block->size) KRValue(std::move(element));
  ++block->size;
}

bool KRValue::operator==(const KRValue& other) const {
  if (type_ != other.type_) {
    return false;
  }
  if (type_ != TypeArray) {
    return KRValueImpl::leafEqual(*this, other);
  }
  return KRValueImpl::equalBlocks(payload_.a, other.payload_.a);
}

const char* KRValue::typeName(Type type) noexcept {
  switch (type) {
    case TypeInvalid:
      return "invalid";
    case TypeBool:
      return "bool";
    case TypeInt:
      return "int";
    case TypeFloat:
      return "float";
    case TypeString:
      return "string";
    case TypeArray:
      return "array";
  }
  return "unknown";
}

void KRValue::throwBadIndex(int i) const {
  if (type_ != TypeArray) {
    throw std::runtime_error("KRValue: cannot index " + withArticle(type_) +
                             " value, expected an array");
  }
  throw std::runtime_error("KRValue: index " + std::to_string(i) +
                           " is out of range for an array of size " +
                           std::to_string(payload_.a->size));
}

void KRValue::throwBadKind(const char* expected) const {
  throw std::runtime_error(std::string("KRValue: expected ") + expected + " value but found " +
                           withArticle(type_) + " value");
}

}  // namespace KR
