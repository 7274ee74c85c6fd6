#include "support/BufferScript.h"

#include <algorithm>

#include "io/ContinuousMemBufferBase.h"
#include "io/FileBufferBase.h"
#include "io/FilteredBufferBase.h"
#include "io/MemBufferBase.h"
#include "io/PipeBufferBase.h"
#include "io/SmartBufferBase.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;

namespace tuskel_test {

namespace {

enum Op { READ, READ_BLOCK, WRITE, WRITE_BLOCK, INSERT, INSERT_BLOCK, CUT, CUT_BLOCK, APPEND, APPEND_BLOCK, TRUNCATE };
const int kOps = 11;
const long kMaxSize = 60000;  // past it a script truncates, to stay quick
const int kLens[] = {1, 2, 7, 1023, 1024, 1025, 4095, 4096, 4097, 10000};

// The buffer rules for one store: its content, where the bytes of an insert
// at or past the end go, and (smart stores) when the content moves to a
// file: at the first operation that checks the barrier while the size is
// above it; block appends and single-byte cuts do not check.
class Model {
public:
    explicit Model(Store store)
        : inFile(store == Store::File || store == Store::Pipe),
          _mayMove(store == Store::SmartPaged || store == Store::SmartContiguous),
          _writesPastEnd(store == Store::Paged || store == Store::SmartPaged || store == Store::Filtered) {}

    void check(Op op) {
        const bool checks = op == WRITE || op == WRITE_BLOCK || op == INSERT || op == INSERT_BLOCK ||
                            op == CUT_BLOCK || op == APPEND;
        if (!checks || !_mayMove || long(content.size()) <= kScriptBarrier) return;
        _mayMove = false;
        inFile = true;
        _writesPastEnd = false;  // a file anchors as the contiguous store does
    }

    void write(size_t pos, const std::string& bytes) {
        content.resize(std::max(content.size(), pos + bytes.size()), '\0');
        content.replace(pos, bytes.size(), bytes);
    }

    // Inside the content the tail moves up. At or past the end the paged
    // store writes (zero gap, bytes at pos); the contiguous and file stores
    // grow by the count only and hold, from pos on, the head of the bytes.
    void insert(size_t pos, const std::string& bytes) {
        if (pos < content.size()) return void(content.insert(pos, bytes));
        if (_writesPastEnd) return write(pos, bytes);
        content.resize(content.size() + bytes.size(), '\0');
        if (pos < content.size()) content.replace(pos, std::string::npos, bytes, 0, content.size() - pos);
    }

    // Bytes held from pos on, at most len.
    size_t have(size_t pos, size_t len) const { return pos < content.size() ? std::min(content.size() - pos, len) : 0; }

    std::string content;
    bool inFile;

private:
    bool _mayMove;
    bool _writesPastEnd;
};

struct Step {
    Op op;
    long pos;
    int len;
    std::string bytes;

    std::string describe() const {
        return "op " + std::to_string(op) + " pos " + std::to_string(pos) + " len " + std::to_string(len);
    }
};

Step choose(Choices& c, long size) {
    Step s;
    s.op = size > kMaxSize ? TRUNCATE : Op(c.next(kOps));
    // Inside, at and near the end, past it, and at 1024- and 4096-byte edges.
    switch (c.next(5)) {
        case 0: s.pos = long(c.next(uint32_t(size) + 1)); break;
        case 1: s.pos = std::max(0L, size - long(c.next(3))); break;
        case 2: s.pos = size + long(c.next(5000)); break;
        case 3: s.pos = 1024 * long(1 + c.next(8)); s.pos += long(c.next(3)) - 1; break;
        default: s.pos = 4096 * long(1 + c.next(3)); s.pos += long(c.next(3)) - 1; break;
    }
    if (size > kMaxSize) s.pos = long(c.next(uint32_t(size / 2)));
    s.len = c.next(2) ? kLens[c.next(10)] : int(1 + c.next(300));
    // Bytes from a fixed pool at a chosen offset: made once, they differ
    // from step to step all the same.
    static const std::string pool = patternBytes(size_t(2 * kLens[9]));
    s.bytes = pool.substr(c.next(uint32_t(kLens[9])), size_t(s.len));
    return s;
}

// Runs one step on both; answers what disagreed, or "".
std::string run(const Step& s, BufferBase& b, Model& m) {
    const size_t at = size_t(s.pos), have = m.have(at, size_t(s.len));
    const char byte = s.bytes[0];
    auto expect = [](bool ok, const char* what) { return ok ? std::string() : std::string(what); };
    m.check(s.op);
    switch (s.op) {
        case READ: {
            const int want = have ? static_cast<unsigned char>(m.content[at]) : -1;
            return expect(b.read(s.pos) == want, "read(pos)");
        }
        case READ_BLOCK: {
            std::string got(size_t(s.len), '\x55');
            got.resize(size_t(std::max(0, b.read(s.pos, &got[0], s.len))));
            return expect(got == m.content.substr(std::min(at, m.content.size()), have), "read(pos, buf, len)");
        }
        case WRITE: b.write(s.pos, byte); m.write(at, s.bytes.substr(0, 1)); return "";
        case WRITE_BLOCK: m.write(at, s.bytes); return expect(b.write(s.pos, s.bytes.data(), s.len) == s.len, "write");
        case INSERT: b.insert(s.pos, byte); m.insert(at, s.bytes.substr(0, 1)); return "";
        case INSERT_BLOCK:
            m.insert(at, s.bytes);
            return expect(b.insert(s.pos, s.bytes.data(), s.len) == s.len, "insert");
        case CUT: b.cut(s.pos); m.content.erase(std::min(at, m.content.size()), 1); return "";
        case CUT_BLOCK:
            m.content.erase(std::min(at, m.content.size()), have);
            return expect(b.cut(s.pos, s.len) == int(have), "cut(pos, len)");
        case APPEND: b.append(byte); m.content += byte; return "";
        case APPEND_BLOCK: m.content += s.bytes; return expect(b.append(s.bytes.data(), s.len) == s.len, "append");
        case TRUNCATE: b.truncate(s.pos); m.content.resize(std::min(at, m.content.size())); return "";
    }
    return "unknown op";
}

}  // namespace

SmartSettings::SmartSettings() : barrier(SmartBufferBase::_barrier), basePath(SmartBufferBase::_basePath) {}

SmartSettings::~SmartSettings() {
    SmartBufferBase::_barrier = barrier;
    SmartBufferBase::_basePath = basePath;
}

StoreUnderTest::StoreUnderTest(Store store) {
    switch (store) {
        case Store::Contiguous: buffer.reset(new ContinuousMemBufferBase(0)); break;
        case Store::Paged: buffer.reset(new MemBufferBase()); break;
        case Store::File: buffer.reset(new FileBufferBase()); break;
        case Store::SmartPaged: buffer.reset(new SmartBufferBase(POLICY_MEM_SMART)); break;
        case Store::SmartContiguous: buffer.reset(new SmartBufferBase(POLICY_CONTINUOUS_MEM_SMART)); break;
        case Store::Filtered:
            wrapped.reset(new MemBufferBase(100));
            buffer.reset(new FilteredBufferBase(wrapped.get()));
            break;
        case Store::Limited:
            wrapped.reset(new ContinuousMemBufferBase(3000));
            buffer.reset(new LimitedBufferBase(wrapped.get(), 0));
            break;
        case Store::Pipe: {
            wrapped.reset(new FileBufferBase());
            auto pipe = new PipeBufferBase(wrapped.get());
            buffer.reset(pipe);
            pipe->getProducerOutputStream()->close();
            break;
        }
    }
}

uint32_t ByteChoices::next(uint32_t bound) {
    uint32_t value = 0;
    for (uint32_t span = 1; span < bound && _left > 0; span <<= 8, --_left) value = value << 8 | *_data++;
    return value % bound;
}

std::string readAll(BufferBase& buffer) {
    const int pieces[] = {1, 7, 4097, 33791};
    std::string out, piece(size_t(std::min(buffer.getSize() + 1, 33791L)), '\x55');
    for (int i = 0, n; (n = buffer.read(long(out.size()), &piece[0], std::min(pieces[i % 4], int(piece.size())))) > 0;
         ++i) {
        out.append(piece, 0, size_t(n));
    }
    return out;
}

std::string runBufferScript(Store store, Choices& choices, int steps) {
    SmartSettings restore;
    SmartBufferBase::_barrier = kScriptBarrier;
    StoreUnderTest subject(store);
    BufferBase& b = *subject.buffer;
    Model m(store);
    for (int i = 0; i < steps && !choices.exhausted(); ++i) {
        const Step s = choose(choices, long(m.content.size()));
        const std::string where = "store " + std::to_string(int(store)) + ", step " + std::to_string(i) + ", " + s.describe();
        std::string wrong;
        try {
            wrong = run(s, b, m);
        } catch (Exception& e) {
            return where + ": threw " + e.getMessage();
        }
        if (wrong.empty() && b.getSize() != long(m.content.size())) wrong = "size";
        if (wrong.empty() && (b.getFileDescriptor() != -1) != m.inFile) wrong = "store (memory or file)";
        if (wrong.empty() && readAll(b) != m.content) wrong = "content";
        if (!wrong.empty()) return where + ": " + wrong + " differs";
    }
    return "";
}

}  // namespace tuskel_test
