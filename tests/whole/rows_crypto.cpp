// MD5, Blowfish and encrypted containers.
#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVBlowfish.h>
#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVMD5.h>
#include <QVFoundation/QVStream.h>

#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr const char kBlock[8] = {'b', 'l', 'o', 'c', 'k', '0', '1', '2'};

// A function of a new object that needs no memory.
Row On(const char* name, void* (*create)(), bool (*isRight)(void* object), bool (*isRightForNull)()) {
    return {name,
            [=](Attempt& attempt) {
                const Owned object{create()};
                attempt.NeedsNoMemory([&] { return isRight(object.Get()); });
            },
            isRightForNull};
}

Rows MD5Rows() {
    return {
        {"QVMD5Create",
         [](Attempt& attempt) {
             attempt.Logs("Couldn't create the instance of the QVMD5.").Creates(QVMD5Create);
         },
         TakesNoHandle},
        On(
            "QVMD5Initialize", QVMD5Create,
            [](void* md5) {
                QVMD5Initialize(md5);
                return QVMD5GetHashValue(md5).A != 0;
            },
            [] {
                QVMD5Initialize(nullptr);
                return true;
            }),
        On(
            "QVMD5Update", QVMD5Create,
            [](void* md5) {
                QVMD5Update(md5, kBlock, sizeof kBlock);
                return true;
            },
            [] {
                QVMD5Update(nullptr, kBlock, sizeof kBlock);
                return true;
            }),
        On(
            "QVMD5Finish", QVMD5Create,
            [](void* md5) {
                QVMD5Initialize(md5);
                QVMD5Finish(md5);
                return QVMD5GetHashValue(md5).A == 0xD98C1DD4;
            },
            [] {
                QVMD5Finish(nullptr);
                return true;
            }),
        On(
            "QVMD5GetHashValue", QVMD5Create, [](void* md5) { return QVMD5GetHashValue(md5).A == 0; },
            [] { return QVMD5GetHashValue(nullptr).A == 0; }),
        {"QVHashMD5",
         [](Attempt& attempt) {
             attempt.NeedsNoMemory([] { return QVHashMD5(nullptr, 0).A == 0xD98C1DD4; });
         },
         TakesNoHandle},
    };
}

Rows BlowfishRows() {
    return {
        {"QVBlowfishCreate", [](Attempt& attempt) { attempt.Creates(QVBlowfishCreate); }, TakesNoHandle},
        {"QVBlowfishSetKey",
         [](Attempt& attempt) {
             const Owned cipher{QVBlowfishCreate()};
             attempt.Answers(1, 0, [&] { return QVBlowfishSetKey(cipher.Get(), "secret", 6); });
         },
         [] { return QVBlowfishSetKey(nullptr, "secret", 6) == 0; }},
        On(
            "QVBlowfishEncryptBlock", QVBlowfishCreate,
            [](void* cipher) {
                char out[8] = {1};
                QVBlowfishEncryptBlock(cipher, kBlock, out);
                return out[0] == 0;  // it has no key
            },
            [] {
                char out[8] = {};
                QVBlowfishEncryptBlock(nullptr, kBlock, out);
                return true;
            }),
        On(
            "QVBlowfishDecryptBlock", QVBlowfishCreate,
            [](void* cipher) {
                char out[8] = {1};
                QVBlowfishDecryptBlock(cipher, kBlock, out);
                return out[0] == 0;
            },
            [] {
                char out[8] = {};
                QVBlowfishDecryptBlock(nullptr, kBlock, out);
                return true;
            }),
        On(
            "QVBlowfishSetCryptoMode", QVBlowfishCreate,
            [](void* cipher) {
                QVBlowfishSetCryptoMode(cipher, QVBlowfishModeECB);
                return QVBlowfishGetCryptoMode(cipher) == QVBlowfishModeECB;
            },
            [] {
                QVBlowfishSetCryptoMode(nullptr, QVBlowfishModeECB);
                return true;
            }),
        On(
            "QVBlowfishGetCryptoMode", QVBlowfishCreate,
            [](void* cipher) { return QVBlowfishGetCryptoMode(cipher) == QVBlowfishModeCBC; },
            [] { return QVBlowfishGetCryptoMode(nullptr) == 0; }),
        On(
            "QVBlowfishSetFeedbackCode", QVBlowfishCreate,
            [](void* cipher) {
                QVBlowfishSetFeedbackCode(cipher, 5);
                return QVBlowfishGetFeedbackCode(cipher) == 5;
            },
            [] {
                QVBlowfishSetFeedbackCode(nullptr, 5);
                return true;
            }),
        On(
            "QVBlowfishGetFeedbackCode", QVBlowfishCreate,
            [](void* cipher) {
                return QVBlowfishGetFeedbackCode(cipher) == QVBlowfishGetFeedbackCode(cipher);
            },
            [] { return QVBlowfishGetFeedbackCode(nullptr) == 0; }),
    };
}

Owned MemoryStream(void* data) {
    return Owned{QVStreamCreateWithMemory(data)};
}

Owned EmptyStream() {
    const Owned data{QVDataCreate(nullptr, 0)};
    return MemoryStream(data.Get());
}

// An object with a key, and with streams that read the data and write to new Data.
Owned CryptoOver(void* data) {
    Owned crypto{QVCryptoCreate()};
    QVCryptoSetKey(crypto.Get(), "secret", 6, 0);
    QVCryptoSetSrcStream(crypto.Get(), MemoryStream(data).Get());
    QVCryptoSetDstStream(crypto.Get(), EmptyStream().Get());
    return crypto;
}

// A key and a container that it opens.
struct Sealed {
    Owned key{QVDataCreate("secret", 6)};
    Owned plain{QVDataCreate("plaintext", 9)};
    Owned container = Owned::Retaining(QVCryptoEncodeData(plain.Get(), key.Get()));
};

// Sets or takes away a stream.
Row SetsStream(const char* name, void (*set)(void*, void*), void* (*get)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned crypto{QVCryptoCreate()};
                const Owned stream = EmptyStream();
                attempt.NeedsNoMemory([&] { set(crypto.Get(), stream.Get()); },
                                      [&] { return get(crypto.Get()) == stream.Get(); });
            },
            [=] {
                const Owned crypto{QVCryptoCreate()};
                const Owned stream = EmptyStream();
                set(nullptr, nullptr);
                set(nullptr, stream.Get());
                set(crypto.Get(), nullptr);
                return get(crypto.Get()) == nullptr;
            }};
}

bool HasNoStream(void* (*get)(void*)) {
    const Owned crypto{QVCryptoCreate()};
    return get(nullptr) == nullptr && get(crypto.Get()) == nullptr;
}

Row GetsStream(const char* name, void* (*get)(void*)) {
    return {name,
            [get](Attempt& attempt) {
                const Owned data{QVDataCreate("abc", 3)};
                const Owned crypto = CryptoOver(data.Get());
                attempt.NeedsNoMemory([&] { return get(crypto.Get()) != nullptr; });
            },
            [get] { return HasNoStream(get); }};
}

// Either way through a container, as Data.
Row ConvertsData(const char* name, void* (*convert)(void* data, void* key), Owned Sealed::*input) {
    return {name,
            [=](Attempt& attempt) {
                const Sealed sealed;
                // Room is reserved ahead only where there is some.
                attempt.OthersLog().MayDoWithout().Lends(
                    [&] { return convert((sealed.*input).Get(), sealed.key.Get()); });
            },
            [=] {
                const Sealed sealed;
                return convert(nullptr, nullptr) == nullptr &&
                       convert(nullptr, sealed.key.Get()) == nullptr &&
                       convert((sealed.*input).Get(), nullptr) == nullptr;
            }};
}

Rows ContainerRows() {
    return {
        {"QVCryptoCreate", [](Attempt& attempt) { attempt.Creates(QVCryptoCreate); }, TakesNoHandle},
        {"QVCryptoSetKey",
         [](Attempt& attempt) {
             const Owned crypto{QVCryptoCreate()};
             attempt.OthersLog().AnswersCode([&] { return QVCryptoSetKey(crypto.Get(), "secret", 6, 16); });
         },
         [] { return QVCryptoSetKey(nullptr, "secret", 6, 0) == QVErrParam; }},
        SetsStream("QVCryptoSetSrcStream", QVCryptoSetSrcStream, QVCryptoGetSrcStream),
        GetsStream("QVCryptoGetSrcStream", QVCryptoGetSrcStream),
        SetsStream("QVCryptoSetDstStream", QVCryptoSetDstStream, QVCryptoGetDstStream),
        GetsStream("QVCryptoGetDstStream", QVCryptoGetDstStream),
        {"QVCryptoEncode",
         [](Attempt& attempt) {
             const Sealed sealed;
             const Owned crypto = CryptoOver(sealed.plain.Get());
             attempt.OthersLog().AnswersCode([&] { return QVCryptoEncode(crypto.Get(), 9); });
         },
         [] { return QVCryptoEncode(nullptr, 9) == QVErrParam; }},
        {"QVCryptoDecode",
         [](Attempt& attempt) {
             const Sealed sealed;
             const Owned crypto = CryptoOver(sealed.container.Get());
             const unsigned long size = QVDataGetSize(sealed.container.Get());
             attempt.OthersLog().AnswersCode([&] { return QVCryptoDecode(crypto.Get(), size); });
         },
         [] { return QVCryptoDecode(nullptr, 80) == QVErrParam; }},
        ConvertsData("QVCryptoEncodeData", QVCryptoEncodeData, &Sealed::plain),
        ConvertsData("QVCryptoDecodeData", QVCryptoDecodeData, &Sealed::container),
    };
}

}  // namespace

Rows CryptoRows() {
    return Joined({MD5Rows(), BlowfishRows(), ContainerRows()});
}

}  // namespace qvtest
