// Arbitrary bytes identified under an arbitrary name and content type, both
// taken from the input: byte 0 is the name's length, byte 1 the content
// type's, then the name, the content type and the content. Over a buffer
// and over a stream the answer must agree and the stream must be put back;
// every signature test also runs over a copy of exactly the content's size,
// so that reading past its length shows.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "filetype/FileTypeIdent.h"
#include "io/BufferBaseInputStream.h"
#include "io/ContinuousMemBufferBase.h"

using QRN_SPACE::FileTypeIdent;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const size_t nameLength = std::min<size_t>(data[0], size - 2);
    const size_t typeLength = std::min<size_t>(data[1], size - 2 - nameLength);
    const char* text = reinterpret_cast<const char*>(data) + 2;
    const std::string name(text, nameLength), type(text + nameLength, typeLength);
    const char* content = text + nameLength + typeLength;
    const int length = static_cast<int>(size - 2 - nameLength - typeLength);

    QRN_SPACE::ContinuousMemBufferBase buffer(length);
    buffer.append(content, length);
    QRN_SPACE::BufferBaseInputStream in(&buffer);
    const int type1 = FileTypeIdent::checkFileType(&buffer, name, type);
    if (FileTypeIdent::checkFileType(&in, name, type) != type1 || in.available() != length) __builtin_trap();

    std::unique_ptr<unsigned char[]> exact(new unsigned char[static_cast<size_t>(length)]);
    std::copy(content, content + length, exact.get());
    for (int row = 0; row < FileTypeIdent::SIGNATURE_ROWS; ++row) FileTypeIdent::priorMatch(exact.get(), length, row, row);
    FileTypeIdent::checkFileType(name.c_str());
    FileTypeIdent::isTypeInList(type1, type.c_str());
    FileTypeIdent::isExtInList(name.c_str(), type.c_str());
    return 0;
}
