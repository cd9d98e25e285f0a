#include <QVFoundation/QVTree.h>

#include "collections/QVTreeImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::FromHandle;
using qv::With;

void* QVTreeCreate() noexcept {
    return CreateObject<QVTreeImpl>();
}

QVBoolean QVTreeIsRoot(void* node) noexcept {
    return With<QVTreeImpl>(node, QVBoolean{0}, [](const QVTreeImpl& t) { return t.IsRoot(); });
}

QVBoolean QVTreeIsLeaf(void* node) noexcept {
    return With<QVTreeImpl>(node, QVBoolean{0}, [](const QVTreeImpl& t) { return t.IsLeaf(); });
}

void* QVTreeGetParent(void* node) noexcept {
    return With<QVTreeImpl>(node, static_cast<void*>(nullptr),
                            [](const QVTreeImpl& t) { return qv::ToHandle(t.GetParent()); });
}

void* QVTreeGetChildren(void* node) noexcept {
    return With<QVTreeImpl>(node, static_cast<void*>(nullptr),
                            [](const QVTreeImpl& t) { return t.GetChildren(); });
}

void* QVTreeGetContext(void* node) noexcept {
    return With<QVTreeImpl>(node, static_cast<void*>(nullptr),
                            [](const QVTreeImpl& t) { return t.GetContext(); });
}

void QVTreeAddChild(void* node, void* child) noexcept {
    With<QVTreeImpl>(node, [child](QVTreeImpl& t) { t.AddChild(FromHandle<QVTreeImpl>(child)); });
}

void QVTreeAddChildren(void* node, void* array) noexcept {
    With<QVTreeImpl>(node, [array](QVTreeImpl& t) { t.AddChildren(array); });
}

void QVTreeRemoveChild(void* node, unsigned long index) noexcept {
    With<QVTreeImpl>(node, [index](QVTreeImpl& t) { t.RemoveChild(index); });
}

void QVTreeRemoveChildren(void* node) noexcept {
    With<QVTreeImpl>(node, [](QVTreeImpl& t) { t.RemoveChildren(); });
}

void QVTreeSetContext(void* node, void* object) noexcept {
    With<QVTreeImpl>(node, [object](QVTreeImpl& t) { t.SetContext(object); });
}
