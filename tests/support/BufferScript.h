#ifndef TUSKEL_TEST_BUFFERSCRIPT_H
#define TUSKEL_TEST_BUFFERSCRIPT_H

// Scripts of random buffer operations run on every store and on a model of
// the buffer rules, shared by the differential test and its fuzzer.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "io/BufferBase.h"

namespace tuskel_test {

// The stores a script runs on, named in messages by their number here; the
// wrappers wrap a store of their own.
enum class Store { Contiguous, Paged, File, SmartPaged, SmartContiguous, Filtered, Limited, Pipe };
const Store kStores[] = {Store::Contiguous, Store::Paged,    Store::File,    Store::SmartPaged,
                         Store::SmartContiguous, Store::Filtered, Store::Limited, Store::Pipe};

// The barrier the smart stores run with, so that they move in mid-script.
const long kScriptBarrier = 3000;

// Restores the smart buffers' process-wide settings when it goes.
struct SmartSettings {
    SmartSettings();
    ~SmartSettings();
    long barrier;
    std::string basePath;
};

// A fresh store and what it wraps; owns both. A pipe comes with its
// writing closed, so that its reads never wait.
struct StoreUnderTest {
    explicit StoreUnderTest(Store store);
    std::unique_ptr<QRN_SPACE::BufferBase> wrapped;  // destroyed after the buffer
    std::unique_ptr<QRN_SPACE::BufferBase> buffer;
};

// Where a script's choices come from.
class Choices {
public:
    virtual ~Choices() = default;
    // A value in [0, bound); bound >= 1.
    virtual uint32_t next(uint32_t bound) = 0;
    virtual bool exhausted() const = 0;
};

class SeededChoices : public Choices {
public:
    explicit SeededChoices(unsigned seed) : _rng(seed) {}
    uint32_t next(uint32_t bound) override { return static_cast<uint32_t>(_rng() % bound); }
    bool exhausted() const override { return false; }

private:
    std::mt19937 _rng;
};

// Reads choices from bytes, as few per choice as the bound needs; zeros
// once they run out.
class ByteChoices : public Choices {
public:
    ByteChoices(const uint8_t* data, size_t size) : _data(data), _left(size) {}
    uint32_t next(uint32_t bound) override;
    bool exhausted() const override { return _left == 0; }

private:
    const uint8_t* _data;
    size_t _left;
};

// Runs up to `steps` operations (all eleven kinds, at positions inside, at
// and past the end and at block edges) on a fresh `store` and on the model,
// comparing every result, the size, the whole content and whether a file
// holds it after each step. Answers the first disagreement, or "" when none.
std::string runBufferScript(Store store, Choices& choices, int steps);

// Everything from 0, read in pieces of 1, 7, 4097 and 33,791 bytes in turn.
std::string readAll(QRN_SPACE::BufferBase& buffer);

}  // namespace tuskel_test

#endif
