// The block compressor as an object: from stream to stream, chunk by chunk.
#pragma once

#include <QVFoundation/QVObject.h>

#include "runtime/QVCBase.h"

class QVDeflateImpl final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDDeflate; }

    // Compresses the source from its marker to its end. Answers a result code; throws std::bad_alloc before
    // anything is read or written.
    [[nodiscard]] int Encode(void* destination, void* source);

private:
    struct Workspace;

    static int ReadChunk(Workspace& work, void* source);
    static void EncodeWithLZSS(Workspace& work) noexcept;
    static int EncodeWithHuffman(void* destination, Workspace& work) noexcept;
};
