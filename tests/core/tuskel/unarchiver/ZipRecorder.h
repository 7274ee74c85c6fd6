#ifndef TUSKEL_TEST_ZIPRECORDER_H
#define TUSKEL_TEST_ZIPRECORDER_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/TestStreams.h"
#include "unarchiver/Tuskel.h"

namespace ziptest {

// An entry processor that keeps every entry it is given (it owns them), hands
// each a collecting stream, answers what `decide` says, and logs the calls:
// "begin", "end", "release", and "entry <name>".
class Recorder : public QRN_SPACE::ArchiveEntryProcessor {
public:
    // Returned by `decide` to leave the action variable untouched.
    static const int kLeaveAlone = 1000;

    struct Seen {
        QRN_SPACE::ArchiveEntryInfo* info;   // owned by the recorder
        int algorithmOffered;               // as processEntry saw it
        tuskel_test::CollectingOutputStream* out;  // null when none was given
    };

    std::function<int(QRN_SPACE::ArchiveEntryInfo&)> decide = [](QRN_SPACE::ArchiveEntryInfo&) {
        return QRN_SPACE::ArchiveConstants::ACTION_DECOMPRESS;
    };
    // Like the host adapter: no stream for an entry whose size is unknown.
    bool streamsOnlyWithSize = false;

    std::vector<std::string> calls;
    std::vector<Seen> seen;
    std::vector<std::string> contained;  // messages of the exceptions held while releaseSession() ran

    void beginUnarchiving() override { calls.push_back("begin"); }
    void endUnarchiving() override { calls.push_back("end"); }
    void releaseSession() override;
    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override;

    // Names of the entries offered, in order; the final entry shows as "".
    std::vector<std::string> names() const;

private:
    std::vector<std::unique_ptr<QRN_SPACE::ArchiveEntryInfo>> _kept;
    std::vector<std::unique_ptr<tuskel_test::CollectingOutputStream>> _outs;
};

}  // namespace ziptest

#endif
