#include "codec/QVDeflateImpl.h"

#include <array>
#include <memory>

#include <QVFoundation/QVStream.h>

#include "codec/block_encoder.h"
#include "codec/sliding_window.h"
#include "codec/tokenizer.h"

// What one call needs, taken at once: about 1 MiB. The dictionary's part is used only as far as the data asks
// for it.
struct QVDeflateImpl::Workspace {
    std::array<std::uint8_t, qv::kChunkSize> chunk;
    std::size_t chunkSize;
    qv::SlidingWindow window;
    qv::TokenList tokens;
    qv::BlockEncoder blocks;
};

int QVDeflateImpl::Encode(void* destination, void* source) {
    const std::unique_ptr<Workspace> work(new Workspace);
    const unsigned long long size = QVStreamGetSize(source);
    while (static_cast<unsigned long long>(QVStreamGetMarker(source)) < size) {
        int code = ReadChunk(*work, source);
        if (code != QVNoErr) return code;
        EncodeWithLZSS(*work);
        code = EncodeWithHuffman(destination, *work);
        if (code != QVNoErr) return code;
    }
    // A data stream answers 1 or 0 here, and only a file stream an error: bytes that the disk did not take.
    const int code = QVStreamFlush(destination);
    return code < 0 ? code : QVNoErr;
}

int QVDeflateImpl::ReadChunk(Workspace& work, void* source) {
    unsigned long done = 0;
    int code = QVStreamGetBytes(source, work.chunk.data(), qv::kChunkSize, &done, 0);
    if (code == QVNoErr && done == 0) {
        // There should be more, and there is nothing: the exact read says why, and keeps this from going on
        // forever.
        code = QVStreamGetBytes(source, work.chunk.data(), qv::kChunkSize, &done, 1);
        if (code == QVNoErr && done == 0) return QVErrReadShort;
    }
    work.chunkSize = done;
    return code;
}

void QVDeflateImpl::EncodeWithLZSS(Workspace& work) noexcept {
    qv::Tokenize(work.window, work.chunk.data(), work.chunkSize, work.tokens);
}

int QVDeflateImpl::EncodeWithHuffman(void* destination, Workspace& work) noexcept {
    const qv::BlockEncoder::Block block = work.blocks.Encode(work.tokens);
    const int code = QVStreamPutUInt16(destination, block.tokenCount);
    if (code != QVNoErr) return code;
    return QVStreamPutBytes(destination, block.body, static_cast<unsigned long>(block.bodySize), nullptr, 1);
}
