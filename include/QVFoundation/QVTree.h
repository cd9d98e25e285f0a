/*
 * Trees: nodes that own an ordered list of child nodes and one context object (type ID 16).
 *
 *     void* root = QVTreeCreate();
 *     void* leaf = QVTreeCreate();
 *     QVTreeSetContext(leaf, text);          // retained
 *     QVTreeAddChild(root, leaf);            // retained
 *     QVRelease(leaf);
 *     QVTreeGetParent(leaf);                 // root, borrowed
 *     QVRelease(root);                       // and with it the leaf
 *
 * A node knows the node it was last added to, without holding it: the parent reads null once that node is
 * gone. Taking a child out of its parent's children does not change whom it knows.
 */
#ifndef QVFOUNDATION_QVTREE_H
#define QVFOUNDATION_QVTREE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** A new root without children and context, owned by the caller. Null when memory runs out (nothing is
 * logged). */
QV_EXPORT void* QVTreeCreate(void) QV_NOTHROW;

/** Whether the node has no parent. */
QV_EXPORT QVBoolean QVTreeIsRoot(void* node) QV_NOTHROW;

/** Whether the node has no children. */
QV_EXPORT QVBoolean QVTreeIsLeaf(void* node) QV_NOTHROW;

/** The node that this one was last added to, borrowed; null for a root, and once that node is gone. */
QV_EXPORT void* QVTreeGetParent(void* node) QV_NOTHROW;

/** The node's own array of children, borrowed: no copy. Read it, but change it through the functions here. */
QV_EXPORT void* QVTreeGetChildren(void* node) QV_NOTHROW;

/** The context, borrowed, or null. */
QV_EXPORT void* QVTreeGetContext(void* node) QV_NOTHROW;

/**
 * Makes the node the child's parent and appends the child, which is retained, to the children. A CHILD THAT
 * HAS A PARENT STAYS AMONG THAT ONE'S CHILDREN as well. Null is refused with "Couldn't add the child tree,
 * because the child is a NULL.". When memory runs out it logs as QVArrayAddObject does. A node that becomes
 * its own descendant is never released.
 */
QV_EXPORT void QVTreeAddChild(void* node, void* child) QV_NOTHROW;

/** Adds the nodes of the array, in order, up to the first null element. Elements that are no nodes are left
 * out. */
QV_EXPORT void QVTreeAddChildren(void* node, void* array) QV_NOTHROW;

/**
 * Removes and releases the child at the index. An index not below the number of children changes nothing and
 * logs "The index(%d) is out of range.".
 */
QV_EXPORT void QVTreeRemoveChild(void* node, unsigned long index) QV_NOTHROW;

/** Removes and releases all children, first to last. */
QV_EXPORT void QVTreeRemoveChildren(void* node) QV_NOTHROW;

/** Exchanges the context: the new object is retained, the old one released; null clears it. The same object:
 * nothing. */
QV_EXPORT void QVTreeSetContext(void* node, void* object) QV_NOTHROW;

QV_END_DECLS

#endif
