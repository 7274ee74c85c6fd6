#ifndef TUSKEL_COMMONBUFFERBASE_H
#define TUSKEL_COMMONBUFFERBASE_H

#include "io/BufferBase.h"
#include "tuskel/CommonDecompressor.h"

// Presents a host CommonBuffer as a library BufferBase: every positioned
// operation seeks the host buffer from its start and then reads or writes
// there. Insert, cut and truncate cannot be expressed through the host
// interface and only log an error. Failures are logged, never thrown.
//
// Does not own the host buffer, which must outlive the adapter; destruction
// never calls the host.
class TUSKEL_API CommonBufferBase : public QRN_SPACE::BufferBase {
public:
    // limit: the most bytes the two write forms may fill; 0 for no limit.
    CommonBufferBase(CommonBuffer* buffer, long limit);
    ~CommonBufferBase() override;

    int read(long off) override;
    int read(long off, char* buf, int len) override;
    void write(long off, char c) override;
    int write(long off, const char* buf, int len) override;
    void insert(long off, char c) override;
    int insert(long off, const char* buf, int len) override;
    void cut(long off) override;
    int cut(long off, int len) override;
    void append(char c) override;
    int append(const char* buf, int len) override;
    void truncate(long newSize) override;

    CommonBuffer* buffer;  // not owned; null once destroyed
    long limit;            // checked by write() only, never by append()

private:
    // Positions the host buffer at off; true when the host answers off.
    bool _seekTo(long off);
    // Would writing len bytes at off pass the limit?
    bool _exceedsLimit(long off, long len) const;
    // The seek to the end that append() needs.
    bool _seekToEnd();
};

#endif
