#include "unarchiver/FileTypeProcessor.h"

#include "filetype/FileTypeIdent.h"

namespace QRN_SPACE {

// FileTypeProcessor::mutex is defined with the format registry, which
// fixes its place in the order of load-time construction.
FileTypeProcessor::CallBack* FileTypeProcessor::call_back = nullptr;

FileTypeProcessor::CallBack::~CallBack() = default;

int FileTypeProcessor::setCallBack(CallBack*) {
    // Intended: the callback is not installed.
    return 0;
}

FileTypeProcessor::~FileTypeProcessor() = default;

int FileTypeProcessor::init() {
    fileName.clear();
    contentType.clear();
    action = 0;
    return 0;
}

void FileTypeProcessor::setFileName(std::string& name) { fileName = name; }

void FileTypeProcessor::setContentType(std::string& type) { contentType = type; }

int FileTypeProcessor::check(InputStream* in) {
    return action = _actionFor(FileTypeIdent::checkFileType(in, fileName, contentType));
}

int FileTypeProcessor::check(BufferBase* buffer) {
    return action = _actionFor(FileTypeIdent::checkFileType(buffer, fileName, contentType));
}

int FileTypeProcessor::requiredLength() { return FileTypeIdent::HEAD_LENGTH; }

int FileTypeProcessor::getAction() { return action; }

int FileTypeProcessor::_actionFor(int fileType) {
    CallBack* callBack = call_back;
    if (callBack != nullptr) return callBack->getAction(fileType);
    return DefaultCallBack().getAction(fileType);
}

}  // namespace QRN_SPACE

namespace {

// Whatever the type: anything but 2 lets the inflater go on to the end.
const int kDefaultAction = 1;

}  // namespace

DefaultCallBack::~DefaultCallBack() = default;

int DefaultCallBack::getAction(int) { return kDefaultAction; }
