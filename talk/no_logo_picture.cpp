// In place of logo_picture.cpp where the libraries that read pictures are missing.
#include "talk/logo.h"

namespace talk {

bool read_logo_picture(const std::string & /*path*/, int /*widest*/, LogoPicture & /*picture*/, std::string &error)
{
    error = "this klovctl was built without the code that reads pictures";
    return false;
}

}  // namespace talk
