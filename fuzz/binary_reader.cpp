#include "fuzz_support.h"
#include "targets.h"

// Whatever is read without a failure must be written and read back to the same bytes.
void qvfuzz::BinaryReader(const std::uint8_t* bytes, std::size_t size) {
    Scope scope;
    void* data = scope.Keep(QVDataCreate(bytes, size));
    void* object = nullptr;
    const int result = QVBinaryFormatReadFromData(data, &object);
    void* stream = scope.Keep(QVStreamCreateWithMemory(data));
    void* streamed = nullptr;
    Check(QVBinaryFormatReadFromStream(stream, &streamed) == result, "Data and stream disagree");
    Check((object == nullptr) == (streamed == nullptr), "only one of Data and stream gives an object");
    if (result != QVNoErr) return;
    void* written = scope.Keep(QVBinaryFormatCreateData(object));
    void* again = nullptr;
    Check(QVBinaryFormatReadFromData(written, &again) == QVNoErr, "what was written cannot be read");
}
