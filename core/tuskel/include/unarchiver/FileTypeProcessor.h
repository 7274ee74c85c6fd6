#ifndef TUSKEL_UNARCHIVER_FILETYPEPROCESSOR_H
#define TUSKEL_UNARCHIVER_FILETYPEPROCESSOR_H

// The library's DecompressProcessor: given an entry's name, its content
// type and its first bytes, it identifies the file type (FileTypeIdent) and
// turns the type into an action code through a process-wide CallBack.
//
// A host hands one to the GZIP or ZIP unarchiver; the unarchiver calls
// init() for every entry and the inflater polls getAction() as it goes,
// skipping the rest of the entry once it answers 2. The host's side calls
// setFileName()/setContentType() and then check() once it holds
// requiredLength() bytes of the entry.

#include <string>

#include "unarchiver/Tuskel.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

class TUSKEL_API FileTypeProcessor : public DecompressProcessor {
public:
    // Maps a file type code to an action code (ArchiveConstants).
    class TUSKEL_API CallBack {
    public:
        virtual ~CallBack();
        virtual int getAction(int fileType) = 0;
    };

    // Read by every check without a lock, so set it once before any
    // unarchiving starts; null means DefaultCallBack. Not owned.
    static CallBack* call_back;
    // Created with the format registry when the library loads.
    static Mutex mutex;

    // Intended: ignores its argument and answers 0, so call_back changes
    // only when code assigns the static member itself.
    static int setCallBack(CallBack* callBack);

    FileTypeProcessor() = default;
    FileTypeProcessor(const FileTypeProcessor&) = delete;
    FileTypeProcessor& operator=(const FileTypeProcessor&) = delete;
    ~FileTypeProcessor() override;

    // Forgets the name and content type; the action becomes 0. Answers 0.
    int init() override;
    void setFileName(std::string& name) override;
    void setContentType(std::string& type) override;
    // Identify the entry from its first bytes and answer the action the
    // callback gives the type. The stream is left where it was.
    int check(InputStream* in) override;
    int check(BufferBase* buffer) override;
    // Bytes of an entry that a check looks at: 1024.
    int requiredLength() override;
    // The action of the last check, 0 after init().
    int getAction() override;

protected:
    int _actionFor(int fileType);

    std::string fileName;     // the entry's name, for its extension
    std::string contentType;  // MIME-style type, consulted without an extension
    int action = 0;           // the result of the last check
};

}  // namespace QRN_SPACE

// The callback in force while call_back is null: every type gets action 1.
class TUSKEL_API DefaultCallBack : public QRN_SPACE::FileTypeProcessor::CallBack {
public:
    ~DefaultCallBack() override;
    int getAction(int fileType) override;
};

#endif
