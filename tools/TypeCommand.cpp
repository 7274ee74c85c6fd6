// tuskel type: the file type code of each FILE and its kind, from the
// library's identification of its first bytes, steered by a name (the
// file's own unless --name is given) or a declared content type.
#include <cstdio>

#include "Commands.h"
#include "FileTypes.h"
#include "Names.h"
#include "Report.h"
#include "filetype/FileTypeIdent.h"
#include "io/BufferedInputStream.h"
#include "io/FileInputStream.h"

namespace tuskel_tool {

namespace {

// Enough to look ahead over the 1024 bytes identification reads, so that a
// pipe can be identified as well as a file.
const int kLookAhead = 4096;


}  // namespace

int runType(const TypeOptions& options, const Common&) {
    int status = EXIT_ALL_GOOD;
    for (const std::string& file : options.files) {
        int type;
        try {
            QRN_SPACE::FileInputStream raw(file.c_str());
            QRN_SPACE::BufferedInputStream in(raw, kLookAhead);
            const std::string name = options.nameGiven ? options.name : baseName(file);
            type = QRN_SPACE::FileTypeIdent::checkFileType(&in, name, options.contentType);
        } catch (QRN_SPACE::Exception& e) {
            complainIo(file, e.getMessage());
            status = EXIT_IO_ERROR;
            continue;
        }
        std::printf("%s: %d %s (%s)\n", printable(file).c_str(), type, typeName(type), typeKind(type));
    }
    return status;
}

}  // namespace tuskel_tool
