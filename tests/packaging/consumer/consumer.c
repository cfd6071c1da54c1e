/* The smallest user of the library: looks a model up and encodes a cut. */
#include <klov/klov.h>
#include <stdio.h>

int main(void)
{
    const model_brief *model = klov_printer_model_brief_find_by_name("QX-100");
    uint8_t buf[8];
    uint32_t len = 0;
    int32_t code = klov_cmd_select_cut_mode_and_feed_paper(model->type, 66, 0, buf, sizeof buf, &len);
    printf("%s %d %02x %02x %02x %02x\n", model->identity, (int)code, buf[0], buf[1], buf[2], buf[3]);
    return code != KLOV_OK || len != 4;
}
