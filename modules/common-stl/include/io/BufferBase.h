#ifndef QRN_IO_BUFFERBASE_H
#define QRN_IO_BUFFERBASE_H

#include "lang/Exception.h"
#include "lang/RNObject.h"

namespace QRN_SPACE {

// A random-access byte container addressed by absolute position from 0; it
// has no cursor (see BufferBaseInputStream/BufferBaseOutputStream).
//
// Contract of every implementation:
// - read(pos) answers 0..255, or -1 at or past the end; read(pos, buf, len)
//   copies min(len, size - pos) bytes and answers 0 (not -1) at the end.
// - writes past the end grow the buffer; the gap reads as zero bytes.
// - insert moves the tail up; cut moves it down; truncate never grows.
// - a null buffer or a length below 1 answers 0 and changes nothing.
// - every data operation first checks validity ("Broken BufferBase"), then a
//   negative position ("Index out of bound"); append checks validity only.
class TUSKEL_API BufferBase : public RNObject {
public:
    // Type codes returned by getType().
    static constexpr int TYPE_MEMORY = 0;
    static constexpr int TYPE_FILE = 1;
    static constexpr int TYPE_SMART = 2;
    static constexpr int TYPE_CONTINUOUS_MEMORY = 4;
    // The wrappers (3 is left unused).
    static constexpr int TYPE_FILTERED = 5;
    static constexpr int TYPE_LIMITED = 6;
    static constexpr int TYPE_PIPE = 7;

    BufferBase() = default;
    BufferBase(const BufferBase&) = delete;
    BufferBase& operator=(const BufferBase&) = delete;
    ~BufferBase() override;

    virtual int read(long pos) = 0;
    virtual int read(long pos, char* buf, int len) = 0;
    virtual void write(long pos, char c) = 0;
    virtual int write(long pos, const char* buf, int len) = 0;
    virtual void insert(long pos, char c) = 0;
    virtual int insert(long pos, const char* buf, int len) = 0;
    virtual void cut(long pos) = 0;
    virtual int cut(long pos, int len) = 0;
    virtual void append(char c) = 0;
    virtual int append(const char* buf, int len) = 0;
    virtual void truncate(long newSize) = 0;

    virtual long getSize() const;
    virtual bool isValid() const;
    // A hint that the content has been consumed and need not be kept.
    virtual void discardUsedBuffer();
    // One address for all bytes (contiguous memory only), else null.
    virtual char* getMemAddress();
    // The backing descriptor (file-backed only), else -1.
    virtual int getFileDescriptor();
    virtual int getType();

protected:
    // The two guard checks that start every data operation.
    void _checkValid() const {
        if (!_valid) _throwBroken();
    }
    void _checkPos(long pos) const {
        _checkValid();
        if (pos < 0) _throwOutOfBound();
    }
    [[noreturn]] static void _throwBroken();
    [[noreturn]] static void _throwOutOfBound();

    long _size = 0;           // kept by stores that hold their own bytes
    bool _valid = true;       // false when construction failed
    bool _discarded = false;  // set by discardUsedBuffer()
    int _type = TYPE_MEMORY;
};

// Thrown by a buffer that would exceed its size limit.
class TUSKEL_API BufferBaseOverSizeException : public Exception {
public:
    using Exception::Exception;
    ~BufferBaseOverSizeException() override;
};

}  // namespace QRN_SPACE

#endif
