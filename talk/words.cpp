#include "talk/words.h"

#include <stdlib.h>
#include <string.h>

namespace talk {
namespace {

struct row {
    const char *english;
    const char *chinese;
};

// In the order of `word`.
constexpr row rows[] = {
    {"Out of paper", "缺纸"},
    {"Paper is running low", "纸张即将用完"},
    {"Cover is open", "机盖打开"},
    {"The cutter is jammed", "切刀卡住"},
    {"The printer reports an error that it can recover from", "打印机报告可恢复的错误"},
    {"The printer reports an error: switch it off and on again", "打印机报告错误：请关机后重新开机"},
    {"Printing", "正在打印"},
    {"Waiting for the printer to finish", "正在等待打印机完成打印"},
    {"Waiting for another job on this printer", "正在等待此打印机上的另一个作业"},
    {"The printer does not answer any more", "打印机不再应答"},
    {"The connection to the printer is lost", "与打印机的连接已断开"},
    {"Ready", "就绪"},
    {"No answer", "无应答"},
    {"Drawer is open", "钱箱已打开"},
    {"Drawer is closed", "钱箱已关闭"},
    {"The queue is printing", "队列正在打印"},
};
static_assert(sizeof rows / sizeof rows[0] == static_cast<size_t>(word::count));

}  // namespace

language language_of_environment()
{
    static const char *const names[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char *name : names) {
        const char *value = getenv(name);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        const bool chinese = strncmp(value, "zh", 2) == 0 && strchr("_.@", value[2]) != nullptr &&
                             strncmp(value, "zh_TW", 5) != 0 && strncmp(value, "zh_HK", 5) != 0;
        return chinese ? language::chinese : language::english;
    }
    return language::english;
}

word error_word(fault error)
{
    switch (error) {
        case fault::cutter:
            return word::cutter_error;
        case fault::recoverable:
            return word::recoverable_error;
        default:
            return word::unrecoverable_error;
    }
}

const char *text_of(word what, language in)
{
    const row &texts = rows[static_cast<size_t>(what)];
    return in == language::chinese ? texts.chinese : texts.english;
}

}  // namespace talk
