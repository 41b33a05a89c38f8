// The tag tree, which stands for a .moff container in memory: the file, its groups, and the entries of each
// group with their bodies once those have been read or set.
#pragma once

#include <type_traits>
#include <utility>
#include <vector>

#include "content/moff/FileBody.h"
#include "content/moff/TagVisitor.h"
#include "foundation/memory/XpSharedPtr.h"

namespace vrx::moff {

class TagBase {
 public:
  TagBase() = default;
  TagBase(const TagBase&) = delete;
  TagBase& operator=(const TagBase&) = delete;
  virtual ~TagBase() = default;
  virtual void Accept(TagVisitor& visitor) = 0;
  /// Bytes of its record in the file, without children and bodies.
  virtual std::uint32_t GetSize() const = 0;
};

template <class Record>
class TagData : public TagBase {
 public:
  std::uint32_t GetSize() const override { return Record::kSize; }

  Record record;
};

template <class Record, class Body>
class TagDataWithBody : public TagData<Record> {
 public:
  void Accept(TagVisitor& visitor) override { visitor.VisitIndexData(*this); }

  XpSharedPtr<Body> body;  // null until it is read or set
};

template <class Record, class Child>
class TagDataWithOneChild : public TagData<Record> {
 public:
  TagDataWithOneChild() : child(new Child) {}
  void Accept(TagVisitor& visitor) override {
    if constexpr (std::is_same_v<Record, GroupData>) visitor.VisitGroupData(*this);
    child->Accept(visitor);
  }

  XpSharedPtr<Child> child;  // never null
};

template <class Record, class Child, std::uint32_t Signature>
class TagDataWithOneChildWithSignature : public TagDataWithOneChild<Record, Child> {
 public:
  static constexpr std::uint32_t kSignature = Signature;

  void Accept(TagVisitor& visitor) override {
    visitor.VisitFile(*this);
    this->child->Accept(visitor);
  }
};

template <class Child>
class TagCompositeBase : public TagBase {
 public:
  const std::vector<XpSharedPtr<Child>>& GetChildren() const { return m_children; }

 protected:
  std::vector<XpSharedPtr<Child>> m_children;
};

template <class Header, class Child, std::uint32_t Signature>
class TagComposite : public TagCompositeBase<Child> {
 public:
  static constexpr std::uint32_t kSignature = Signature;

  void Accept(TagVisitor& visitor) override {
    if constexpr (Signature == kGroupSignature) {
      visitor.VisitGroupHeader(*this);
    } else {
      visitor.VisitIndexHeader(*this);
    }
    for (const auto& child : this->m_children) child->Accept(visitor);
  }
  std::uint32_t GetSize() const override { return Header::kSize; }

  const Header& GetHeader() const { return m_header; }
  /// Takes over all but the count, which follows the children.
  void SetHeader(const Header& header) {
    m_header = header;
    m_header.count = static_cast<std::uint32_t>(this->m_children.size());
  }
  Child& Add() {
    this->m_children.push_back(XpSharedPtr<Child>(new Child));
    ++m_header.count;
    return *this->m_children.back();
  }

  std::int64_t position = 0;  // of its header in the file that it was read from

 private:
  Header m_header;
};

}  // namespace vrx::moff
