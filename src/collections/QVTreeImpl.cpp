#include "collections/QVTreeImpl.h"

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVLibrary.h>

#include "collections/QVArrayImpl.h"
#include "runtime/Handle.h"

using qv::Owned;

// Made without the array's C function, which would log: a node that cannot be made says nothing.
QVTreeImpl::QVTreeImpl() : children_(qv::ToHandle(new QVArrayImpl(0))) {}

QVTreeImpl::~QVTreeImpl() {
    // The children forget their parent first: one that is deep down may be destroyed later than this node.
    while (firstFollower_ != nullptr)
        firstFollower_->LeaveParent();
    LeaveParent();
    children_.Reset();
    context_.Reset();
}

bool QVTreeImpl::IsLeaf() const {
    return QVArrayGetCount(children_.Get()) == 0;
}

void QVTreeImpl::AddChild(QVTreeImpl* child) {
    if (child == nullptr) return QVLog(L"Couldn't add the child tree, because the child is a NULL.");
    child->Follow(this);
    QVArrayAddObject(children_.Get(), qv::ToHandle(child));
}

void QVTreeImpl::AddChildren(void* array) {
    // Counted first: the array may be this node's own.
    const unsigned long count = QVArrayGetCount(array);
    for (unsigned long i = 0; i < count; ++i) {
        void* object = QVArrayGetObjectAtIndex(array, i);
        if (object == nullptr) return;
        if (auto* child = qv::CheckedHandle<QVTreeImpl>(object)) AddChild(child);
    }
}

void QVTreeImpl::RemoveChild(unsigned long index) {
    QVArrayRemoveObjectAtIndex(children_.Get(), index);
}

void QVTreeImpl::RemoveChildren() {
    QVArrayRemoveAllObjects(children_.Get());
}

void QVTreeImpl::SetContext(void* object) {
    if (object == context_.Get()) return;
    // The old context goes last: it may hold this node.
    Owned old = Owned::Retaining(object);
    std::swap(old, context_);
}

void QVTreeImpl::Follow(QVTreeImpl* parent) noexcept {
    if (parent_ == parent) return;
    LeaveParent();
    parent_ = parent;
    nextFollower_ = parent->firstFollower_;
    if (nextFollower_ != nullptr) nextFollower_->previousFollower_ = this;
    parent->firstFollower_ = this;
}

void QVTreeImpl::LeaveParent() noexcept {
    if (parent_ == nullptr) return;
    (previousFollower_ != nullptr ? previousFollower_->nextFollower_ : parent_->firstFollower_) =
        nextFollower_;
    if (nextFollower_ != nullptr) nextFollower_->previousFollower_ = previousFollower_;
    parent_ = nextFollower_ = previousFollower_ = nullptr;
}
