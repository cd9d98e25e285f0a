/*
 * The whole of QVFoundation. QVObject.h states the rules of the interface.
 */
#ifndef QVFOUNDATION_QVFOUNDATION_H
#define QVFOUNDATION_QVFOUNDATION_H

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArchive.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBase64.h>
#include <QVFoundation/QVBinaryFormat.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVBlockTransform.h>
#include <QVFoundation/QVBlowfish.h>
#include <QVFoundation/QVCSSParser.h>
#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVEnumerator.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVFileManager.h>
#include <QVFoundation/QVHTMLCharSet.h>
#include <QVFoundation/QVHashValue.h>
#include <QVFoundation/QVHuffman.h>
#include <QVFoundation/QVLZSS.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVMD5.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVPatternSearch.h>
#include <QVFoundation/QVPlatformObject.h>
#include <QVFoundation/QVPlist.h>
#include <QVFoundation/QVRingList.h>
#include <QVFoundation/QVScanner.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>
#include <QVFoundation/QVTree.h>
#include <QVFoundation/QVXMLTree.h>

#endif
