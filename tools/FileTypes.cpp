#include "FileTypes.h"

namespace tuskel_tool {

namespace {

struct TypeName {
    int type;
    const char* name;
};

// Every code the identification answers, 999 aside.
const TypeName kNames[] = {
    {100, "text"},    {101, "html"},  {102, "vbscript"}, {103, "javascript"}, {104, "batch"},
    {200, "jpeg"},    {201, "gif"},   {202, "pic"},      {203, "tiff"},       {204, "png"},
    {205, "bmp"},     {206, "ico"},   {300, "mpeg"},     {301, "avi"},        {302, "flc"},
    {303, "fli"},     {304, "mov"},   {350, "pattern"},  {400, "mp3"},        {401, "wav"},
    {402, "midi"},    {500, "exe"},   {501, "com"},      {502, "pdf"},        {504, "doc"},
    {505, "dot"},     {506, "ppt"},   {507, "chm"},      {700, "zip"},        {701, "rar"},
    {702, "arc"},     {703, "arj"},   {704, "tar"},      {705, "gzip"},       {706, "compress"},
    {707, "mscompress"}, {708, "cab"}, {709, "zoo"},
};

}  // namespace

const char* typeName(int type) {
    for (const TypeName& t : kNames) {
        if (t.type == type) return t.name;
    }
    return "unknown";
}

// Codes come in hundreds; 350 is a family of its own inside the video range.
const char* typeKind(int type) {
    if (type == 350) return "pattern";
    switch (type / 100) {
        case 1: return "text";
        case 2: return "image";
        case 3: return "video";
        case 4: return "audio";
        case 5: return "executable or document";
        case 7: return "archive";
        default: return "unknown";
    }
}

}  // namespace tuskel_tool
