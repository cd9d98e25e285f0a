/*
 * XML documents as trees of typed nodes, and their text.
 *
 * An XML node is a tree node (QVTree.h, the same type ID 16) with a node type, a string value, attributes
 * with their order, and an empty-element flag. Nodes are joined with the tree functions. Getters lend what
 * the node holds.
 *
 *     void* document = QVXMLTreeCreateDocumentNode();
 *     void* greeting = QVXMLTreeCreateElementNode(QVSTR(L"greeting"), NULL, NULL, 0);
 *     void* text = QVXMLTreeCreateTextNode(QVSTR(L"1 < 2"));
 *     QVTreeAddChild(greeting, text);
 *     QVTreeAddChild(document, greeting);
 *     void* data = QVXMLTreeCreateData(document, 1);   // <greeting>1 &lt; 2</greeting>
 */
#ifndef QVFOUNDATION_QVXMLTREE_H
#define QVFOUNDATION_QVXMLTREE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What QVXMLTreeGetNodeType answers. No function makes a comment node; the code is reserved for it. */
enum {
    QVXMLNodeDocument = 1,
    QVXMLNodeElement = 2,
    QVXMLNodeProcessingInstruction = 3,
    QVXMLNodeComment = 4,
    QVXMLNodeText = 5,
    QVXMLNodeDocumentType = 7
};

/** A new document node, owned by the caller; null when memory runs out. */
QV_EXPORT void* QVXMLTreeCreateDocumentNode(void) QV_NOTHROW;

/**
 * A new processing instruction with the target "xml", owned by the caller; the string, which is retained and
 * may be null, is its data. Null when memory runs out.
 */
QV_EXPORT void* QVXMLTreeCreateProcessingInstructionNode(void* string) QV_NOTHROW;

/**
 * A new element, owned by the caller. Note the order of the arguments: the order comes before the attributes.
 *
 * name: the element's name. order: an array of attribute names as strings. attributes: a dictionary from name
 * to value string. All three are retained and may be null; an element has attributes only when both the order
 * and the dictionary are given. empty: whether a single empty-element tag is written. Null when memory runs
 * out.
 */
QV_EXPORT void* QVXMLTreeCreateElementNode(void* name, void* order, void* attributes,
                                           QVBoolean empty) QV_NOTHROW;

/** A new text node, owned by the caller; the string is retained and may be null. Null when memory runs out.
 */
QV_EXPORT void* QVXMLTreeCreateTextNode(void* string) QV_NOTHROW;

/**
 * A new document type, owned by the caller; its name is retained. The identifiers become the attributes
 * "publicID" and "systemID", in this order, each present only when it is given. Note the order of the
 * arguments: the system identifier comes first. Null when memory runs out.
 */
QV_EXPORT void* QVXMLTreeCreateDocumentTypeNode(void* name, void* systemID, void* publicID) QV_NOTHROW;

/** The node's type (QVXMLNode...); 0 for null. */
QV_EXPORT unsigned long QVXMLTreeGetNodeType(void* node) QV_NOTHROW;

/** The node's string value, borrowed; null is possible. */
QV_EXPORT void* QVXMLTreeGetStringValue(void* node) QV_NOTHROW;

/** The array of attribute names, borrowed; null is possible. */
QV_EXPORT void* QVXMLTreeGetAttributeOrder(void* node) QV_NOTHROW;

/** The dictionary of attributes, borrowed; null is possible. */
QV_EXPORT void* QVXMLTreeGetAttributes(void* node) QV_NOTHROW;

/** The node's children, as QVTreeGetChildren gives them. */
QV_EXPORT void* QVXMLTreeGetChildren(void* node) QV_NOTHROW;

/** The node's parent, as QVTreeGetParent gives it. */
QV_EXPORT void* QVXMLTreeGetParent(void* node) QV_NOTHROW;

/** Whether the node was created as an empty element. */
QV_EXPORT QVBoolean QVXMLTreeIsEmpty(void* node) QV_NOTHROW;

/**
 * The XML text of the tree as a new Data in UTF-8, owned by the caller. No white space, line breaks or
 * declaration are added.
 *
 * flags: bit 0 selects the limited table of entities (QVHTMLCharSet.h) for element names, attributes and
 * comments; without it Latin-1 letters there become entities too. Text always uses the limited table,
 * whatever the flags say; the data of instructions and the parts of a document type are written as they are.
 *
 * An attribute that the order lists twice is written twice; one without a string value is left out. Children
 * of an element with the empty flag, of text and of instructions follow their node; those of a document type
 * stand in brackets. Nodes of another type, plain tree nodes among them, are left out with their children. An
 * empty document gives empty Data.
 *
 * Null when the root is no XML node or of no known type, when a node contains itself, when nodes are nested
 * more than 10,000 deep, or when memory runs out.
 */
QV_EXPORT void* QVXMLTreeCreateData(void* root, unsigned int flags) QV_NOTHROW;

/** The same as QVXMLTreeCreateData. */
QV_EXPORT void* QVXMLTreeCreateDataMac(void* root, unsigned int flags) QV_NOTHROW;

QV_END_DECLS

#endif
