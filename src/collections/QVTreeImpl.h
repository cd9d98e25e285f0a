// A node that owns its children, through an array, and a context object. It knows its parent without holding
// it: when the parent goes, its followers forget it. The nodes of XML trees derive from this class.
#pragma once

#include <QVFoundation/QVObject.h>

#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVTreeImpl : public QVCBase {
public:
    // Throws when there is no memory.
    QVTreeImpl();
    ~QVTreeImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDTree; }

    [[nodiscard]] bool IsRoot() const { return parent_ == nullptr; }
    [[nodiscard]] bool IsLeaf() const;
    // All three are borrowed; the parent and the context may be null.
    [[nodiscard]] QVTreeImpl* GetParent() const { return parent_; }
    [[nodiscard]] void* GetChildren() const { return children_.Get(); }
    [[nodiscard]] void* GetContext() const { return context_.Get(); }

    // The child stays among the children of an earlier parent, but knows the latest one only.
    void AddChild(QVTreeImpl* child);
    // Up to the first null; elements that are no nodes are left out.
    void AddChildren(void* array);
    void RemoveChild(unsigned long index);
    void RemoveChildren();
    void SetContext(void* object);

private:
    void Follow(QVTreeImpl* parent) noexcept;
    void LeaveParent() noexcept;

    QVTreeImpl* parent_ = nullptr;
    qv::Owned children_;
    qv::Owned context_;

    // The nodes whose parent is this one, removed children among them, linked through their own fields.
    QVTreeImpl* firstFollower_ = nullptr;
    QVTreeImpl* nextFollower_ = nullptr;
    QVTreeImpl* previousFollower_ = nullptr;
};
