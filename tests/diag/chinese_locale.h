// A process locale named zh_CN.utf8 for the length of a test, whatever the machine has installed.
#pragma once

#include <locale.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

// Locale folders of the test's own: LOCPATH points to a folder in which zh_CN.utf8 is the C library's own UTF-8 locale
// (or, for a machine without Chinese, to an empty one). At the end the process is back in the C locale.
class LocaleFolder {
public:
    enum class Chinese { installed, missing };

    explicit LocaleFolder(Chinese chinese)
    {
        std::string pattern = std::filesystem::temp_directory_path() / "locale_XXXXXX";
        folder_ = mkdtemp(pattern.data());
        if (chinese == Chinese::installed) {
            std::error_code failure;
            std::filesystem::create_directory_symlink("/usr/lib/locale/C.utf8", folder_ + "/zh_CN.utf8", failure);
        }
        setenv("LOCPATH", folder_.c_str(), 1);
    }

    ~LocaleFolder()
    {
        unsetenv("LOCPATH");
        setlocale(LC_ALL, "C");
        std::filesystem::remove_all(folder_);
    }

    LocaleFolder(const LocaleFolder &) = delete;
    LocaleFolder &operator=(const LocaleFolder &) = delete;

    // Whether the locale can really be had here; leaves the process in the C locale.
    static bool has_chinese()
    {
        const bool found = setlocale(LC_ALL, "zh_CN.utf8") != nullptr;
        setlocale(LC_ALL, "C");
        return found;
    }

private:
    std::string folder_;
};

inline std::string current_locale()
{
    return setlocale(LC_ALL, nullptr);
}
