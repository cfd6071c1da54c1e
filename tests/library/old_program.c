/*
 * A program that was built with today's headers and goes through the catalogue in every way that they offer. Without an
 * argument it runs on the library of today; with the word "grown" it expects one model more, which it was not built
 * for.
 */
#include <klov/klov.h>
#include <stdio.h>
#include <string.h>

static int failures;

#define CHECK(condition) \
    ((condition) ? (void)0 : (void)(failures++, fprintf(stderr, "line %d: %s\n", __LINE__, #condition)))

static void look_everybody_up(int32_t models)
{
    for (int32_t i = 0; i < models; i++) {
        const model_brief *row = klov_model_at(i);
        CHECK(row != NULL && row->model_name != NULL && row->width > 0);
        const model_brief *found = klov_printer_model_brief_find_by_identity(row->identity);
        CHECK(found != NULL && strcmp(found->identity, row->identity) == 0);
        printer_model *model = NULL;
        CHECK(klov_printer_model_creator2(row->model_name, &model) == KLOV_OK);
        CHECK(model != NULL && strcmp(model->model_name, row->model_name) == 0);
        klov_printer_model_destroy(model);
        uint32_t id = 0;
        int32_t type = 0;
        CHECK(klov_printer_model_id_get_property(row->id, KLOV_MODEL_PROP_ID, &type, &id, sizeof id, NULL) == KLOV_OK);
        CHECK(id == row->id);
    }
    CHECK(klov_model_at(-1) == NULL && klov_model_at(models) == NULL);
    CHECK(klov_printer_model_brief_find_by_name("no such model") == NULL);
    const model_brief *closing = klov_printer_model_brief_find_by_name("unknown");
    CHECK(closing != NULL && closing->id == 0xFFFFFFFF);
}

/* The table itself, as the program was built to know it. */
static void walk_the_table(int grown)
{
    for (int i = 0; i < MODEL_BRIEF_ROWS - 1; i++) {
        const model_brief *row = &model_brief_table[i];
        CHECK(strcmp(klov_model_at(i)->identity, row->identity) == 0);
        CHECK(klov_model_at(i) == row);
    }
    CHECK((model_brief_table[MODEL_BRIEF_ROWS - 1].id == 0xFFFFFFFF) == !grown);
    const model_brief *qx = klov_printer_model_brief_find_by_name("QX-100");
    CHECK(qx != NULL && qx - model_brief_table < MODEL_BRIEF_ROWS && qx == &model_brief_table[qx - model_brief_table]);
    int32_t instances = 0;
    while (instances < MODEL_BRIEF_ROWS && models_table[instances] != NULL) {
        instances++;
    }
    CHECK(instances > 30 && instances < 60);
}

int main(int argc, char **argv)
{
    const int grown = argc > 1 && strcmp(argv[1], "grown") == 0;
    const int32_t models = klov_model_count();
    CHECK(grown ? models >= MODEL_BRIEF_ROWS : models >= MODEL_BRIEF_ROWS - 1);
    CHECK((klov_printer_model_brief_find_by_name("QX-300") != NULL) == grown);
    look_everybody_up(models);
    walk_the_table(grown);
    klov_printer_model_detach();
    return failures == 0 ? 0 : 1;
}
