#ifndef TUSKEL_TOOLS_ARCHIVE_H
#define TUSKEL_TOOLS_ARCHIVE_H

#include <memory>
#include <string>
#include <vector>

#include "Entry.h"
#include "ZipDirectory.h"
#include "io/BufferBase.h"
#include "unarchiver/Tuskel.h"

namespace tuskel_tool {

// One input opened as an archive: the format it holds, and walks over its
// entries into a sink. A ZIP is walked the library's way, through its local
// headers as a stream; whatever the directory lists that the walk did not
// reach (the entries behind a failed one among them) is then read at the
// offset the directory gives, with the same decompress processor. A
// self-extractor is walked the same way from the archive inside it.
class Archive {
public:
    // `input` is not owned and must outlive the archive. `fileName` names
    // the entry of a GZIP file that stores no name of its own.
    Archive(QRN_SPACE::BufferBase& input, const std::string& fileName);
    ~Archive();

    Format format() const { return _format; }

    // Every entry into `sink`. `dp` (may be null, not owned) is handed to
    // the unarchivers: it may cut an entry short (getAction() == 2).
    // Problems of the archive as a whole are kept in problems(). Throws
    // OutputFailure when the sink's output fails.
    void walk(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp);

    // ZIP formats only: every entry the central directory lists, in its
    // order, each read at the offset the directory gives. False, with
    // nothing walked, when there is no sound directory.
    bool walkDirectory(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp);

    // The central directory (ZIP formats), read on first use.
    const ZipDirectory& directory();

    const std::vector<std::string>& problems() const { return _problems; }

private:
    void _detect();
    void _walkGzip(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp);
    void _walkZip(EntrySink& sink, QRN_SPACE::DecompressProcessor* dp);

    QRN_SPACE::BufferBase& _input;
    std::string _fileName;
    Format _format = Format::None;
    unsigned int _zipStart = 0;  // where the archive begins inside the input
    std::unique_ptr<ZipDirectory> _directory;
    std::vector<std::string> _problems;
};

// Gives an unarchiver's inflation the signal to stop: once cut(), every
// check answers 2 until the next entry begins (init()).
class Cutter : public QRN_SPACE::DecompressProcessor {
public:
    int init() override;
    void setFileName(std::string&) override {}
    void setContentType(std::string&) override {}
    int check(QRN_SPACE::InputStream*) override { return 0; }
    int check(QRN_SPACE::BufferBase*) override { return 0; }
    int requiredLength() override { return 0; }
    int getAction() override;

    void cut() { _cut = true; }
    bool isCut() const { return _cut; }

private:
    bool _cut = false;
};

// The name a GZIP entry takes when its header stores none: the file's own
// name without ".gz" (".tgz" becomes ".tar").
std::string gzipEntryName(const std::string& fileName);

}  // namespace tuskel_tool

#endif
