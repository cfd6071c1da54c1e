// Names the kinds of document that people give to a printer's reader by mistake.
#ifndef KLOV_PREVIEW_DOCUMENT_H
#define KLOV_PREVIEW_DOCUMENT_H

#include "preview/command.h"

namespace preview {

// "a PDF document" and the like when the input begins as one; empty when it may be a printer's bytes.
std::string_view document_kind(Bytes start);

}  // namespace preview

#endif
