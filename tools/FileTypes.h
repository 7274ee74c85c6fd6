#ifndef TUSKEL_TOOLS_FILETYPES_H
#define TUSKEL_TOOLS_FILETYPES_H

namespace tuskel_tool {

// A short name for a file type code of the library's identification
// ("png", "zip", "unknown").
const char* typeName(int type);

// The kind a type code belongs to: text, image, video, pattern, audio,
// executable or document, archive, unknown.
const char* typeKind(int type);

}  // namespace tuskel_tool

#endif
