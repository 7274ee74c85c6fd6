#ifndef TUSKEL_UNARCHIVER_FILETYPEPROCESSOR_H
#define TUSKEL_UNARCHIVER_FILETYPEPROCESSOR_H

/// @file
/// FileTypeProcessor: entries judged by their file type.

#include <string>

#include "unarchiver/Tuskel.h"
#include "util/Mutex.h"

namespace QRN_SPACE {

/// The library's DecompressProcessor: given an entry's name, its content
/// type and its first bytes, it identifies the file type (FileTypeIdent) and
/// turns the type into an action code through a process-wide CallBack.
///
/// A host hands one to the GZIP or ZIP unarchiver; the unarchiver calls
/// init() for every entry and the inflater polls getAction() as it goes,
/// skipping the rest of the entry once it answers 2. The host's side calls
/// setFileName()/setContentType() and then check() once it holds
/// requiredLength() bytes of the entry. Without a callback of its own every
/// check answers 1, and **setCallBack() does not install one** (intended).
///
/// One processor serves one unarchiver on one thread; the callback is
/// shared by all. Checks throw what the stream or buffer throws.
/// @ingroup filetype
class TUSKEL_API FileTypeProcessor : public DecompressProcessor {
public:
    /// Maps a file type code (FileTypeIdent) to an action code
    /// (ArchiveConstants). Called from every thread that checks.
    class TUSKEL_API CallBack {
    public:
        virtual ~CallBack();
        /// The action for entries of type `fileType`.
        virtual int getAction(int fileType) = 0;
    };

    /// Read by every check without a lock, so set it once before any
    /// unarchiving starts; null means DefaultCallBack. Not owned: it must
    /// outlive every check.
    static CallBack* call_back;
    /// Created with the format registry when the library loads; nothing in
    /// the library locks it.
    static Mutex mutex;

    /// Intended: ignores its argument and answers 0, so call_back changes
    /// only when code assigns the static member itself.
    static int setCallBack(CallBack* callBack);

    FileTypeProcessor() = default;
    FileTypeProcessor(const FileTypeProcessor&) = delete;
    FileTypeProcessor& operator=(const FileTypeProcessor&) = delete;
    ~FileTypeProcessor() override;

    /// Forgets the name and content type; the action becomes 0. Answers 0.
    int init() override;
    /// The entry's name, for its extension (copied).
    void setFileName(std::string& name) override;
    /// The entry's MIME-style type, consulted without an extension (copied).
    void setContentType(std::string& type) override;
    /// Identifies the entry from the stream's next bytes and answers the
    /// action the callback gives the type. The stream is left where it was.
    int check(InputStream* in) override;
    /// Identifies the entry from the buffer's first bytes and answers the
    /// action the callback gives the type.
    int check(BufferBase* buffer) override;
    /// Bytes of an entry that a check looks at: 1024.
    int requiredLength() override;
    /// The action of the last check, 0 after init().
    int getAction() override;

protected:
    /// The callback's action for `fileType`.
    int _actionFor(int fileType);

    std::string fileName;     ///< The entry's name, for its extension.
    std::string contentType;  ///< MIME-style type, consulted without an extension.
    int action = 0;           ///< The result of the last check.
};

}  // namespace QRN_SPACE

/// The callback in force while FileTypeProcessor::call_back is null: every
/// type gets action 1. Stateless.
/// @ingroup filetype
class TUSKEL_API DefaultCallBack : public QRN_SPACE::FileTypeProcessor::CallBack {
public:
    ~DefaultCallBack() override;
    /// 1, whatever the type.
    int getAction(int fileType) override;
};

#endif
