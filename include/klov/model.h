/**
 * \file
 * The model catalogue: which printers there are, what each one is, and the properties of its hardware family.
 *
 * A catalogue row (model_brief) is constant and lives as long as the library; its strings may be kept but not changed
 * or freed. A model instance (printer_model) adds the family's properties; the creators allocate one, which the caller
 * gives back with klov_printer_model_destroy(). The id queries keep instances of their own in models_table, which has
 * no lock: use them from one thread.
 *
 * Sizes and lengths are in bytes unless a comment says otherwise. Names and identities compare byte by byte and must
 * not be null. Result codes are those of klov/result.h.
 */
#ifndef KLOV_MODEL_H
#define KLOV_MODEL_H

#include <klov/export.h>
#include <klov/result.h>
#include <stddef.h>
#include <stdint.h>

/** One row of the catalogue. */
typedef struct KLOV_RECORD(model_brief) {
    uint32_t id;              /**< the hardware family, shared by its models; 0xFFFFFFFF in the closing row */
    const char *manufacturer; /**< the brand on the case; empty for unbranded models */
    const char *model_name;   /**< the ShortNickName of the model's PPD */
    const char *identity;     /**< the name to show */
    const char *description;  /**< identity and class, such as "Acme QX-100 Receipt Printer" */
    uint32_t type;            /**< command dialect: the class word without the id byte */
    int32_t width;            /**< printable width in dots */
    uint32_t flags_a;         /**< capability word, carried and not interpreted */
    uint32_t flags_b;         /**< capability word, carried and not interpreted */
    float unit_factor;        /**< 0.0625 or 0.125, carried and not interpreted */
} klov_model_brief;

/** One model with its properties. `size` must hold sizeof(printer_model): it marks a valid record. */
typedef struct KLOV_RECORD(printer_model) {
    uint32_t size;             /**< sizeof(printer_model) */
    uint32_t id;               /**< the hardware family, shared by its models */
    const char *manufacturer;  /**< the brand on the case; empty for unbranded models */
    const char *model_name;    /**< the ShortNickName of the model's PPD */
    const char *identity;      /**< the name to show */
    const char *description;   /**< identity and class */
    uint32_t type;             /**< class word for the commands: the row's type, the id's low byte in bits 16-23 */
    int32_t width;             /**< printable width in dots */
    uint32_t flags_a;          /**< capability word, carried and not interpreted */
    uint32_t flags_b;          /**< capability word, carried and not interpreted */
    uint8_t prop_byte_0;       /**< of the family, carried and not interpreted */
    uint8_t prop_byte_1;       /**< of the family, carried and not interpreted */
    uint8_t prop_byte_2;       /**< of the family, carried and not interpreted */
    uint8_t prop_byte_3;       /**< of the family, carried and not interpreted */
    uint8_t prop_byte_4;       /**< of the family, carried and not interpreted */
    uint8_t feature_flag;      /**< of the family, 0 or 1: the value of MODEL_PROP_FEATURE_FLAG */
    const char *pagemode_area; /**< "width,height" of the page-mode area in dots, or empty */
    const char *barcode_set;   /**< bar codes, separated by ',' */
    const char *spare_list;    /**< never set by the library */
    const char *fonts;         /**< letter, cell width and height in dots, code pages; fonts separated by ';' */
    uint8_t byte_a;            /**< 1 on every model */
    uint8_t byte_b;            /**< 1 on every model */
    uint8_t byte_c;            /**< 8 on every model */
    int32_t dpi;               /**< 203 on every model */
    float motion_v;            /**< vertical motion unit in millimetres */
    float motion_h;            /**< horizontal motion unit in millimetres */
    uint8_t special_flag;      /**< of the family, carried and not interpreted */
    float unit_factor;         /**< of the row, carried and not interpreted */
} klov_printer_model;

/** Keys of the property queries. */
enum klov_model_property {
    KLOV_MODEL_PROP_ID = 1,             /**< the id, an int */
    KLOV_MODEL_PROP_NAME = 2,           /**< the model name, a string */
    KLOV_MODEL_PROP_FEATURE_FLAG = 129, /**< the feature flag, a bool */
    KLOV_MODEL_PROP_PAGEMODE_AREA = 130 /**< the page-mode area, a string */
};

/** Types that the property queries report. */
enum klov_model_property_type {
    KLOV_MODEL_PROPTYPE_BOOL = 1,   /**< one byte, 0 or 1 */
    KLOV_MODEL_PROPTYPE_STRING = 2, /**< text without a terminator */
    KLOV_MODEL_PROPTYPE_INT = 3,    /**< four bytes, least significant first */
    KLOV_MODEL_PROPTYPE_BYTE = 4    /**< one byte; no property has it */
};

#ifndef KLOV_NO_SHORT_NAMES
typedef klov_model_brief model_brief;     /**< one row of the catalogue, by its short name */
typedef klov_printer_model printer_model; /**< one model with its properties, by its short name */

#define MODEL_PROP_ID 1              /**< KLOV_MODEL_PROP_ID */
#define MODEL_PROP_NAME 2            /**< KLOV_MODEL_PROP_NAME */
#define MODEL_PROP_FEATURE_FLAG 129  /**< KLOV_MODEL_PROP_FEATURE_FLAG */
#define MODEL_PROP_PAGEMODE_AREA 130 /**< KLOV_MODEL_PROP_PAGEMODE_AREA */

#define MODEL_PROPTYPE_BOOL 1   /**< KLOV_MODEL_PROPTYPE_BOOL */
#define MODEL_PROPTYPE_STRING 2 /**< KLOV_MODEL_PROPTYPE_STRING */
#define MODEL_PROPTYPE_INT 3    /**< KLOV_MODEL_PROPTYPE_INT */
#define MODEL_PROPTYPE_BYTE 4   /**< KLOV_MODEL_PROPTYPE_BYTE */

/**
 * Rows that model_brief_table has in every release of this soname, at least: 173 models and the closing "unknown" row.
 * Where there are more models, the closing row stands further behind.
 */
#define MODEL_BRIEF_ROWS 174

/** The catalogue. For programs that go through it klov_model_count() and klov_model_at() are the way that lasts. */
KLOV_API const klov_model_brief model_brief_table[MODEL_BRIEF_ROWS];

/**
 * The instances that the id queries have made so far, filled from the front, null behind. One slot an id, and the
 * catalogue has some forty ids: the slots do not grow with the models.
 */
KLOV_API klov_printer_model *models_table[MODEL_BRIEF_ROWS];
#endif

/* ---- Catalogue rows ---- */

/** How many models the catalogue of this library has, the closing "unknown" row not counted. */
KLOV_API int32_t klov_model_count(void);

/** The model at this index, from 0 to klov_model_count() - 1; null for every other index. */
KLOV_API const klov_model_brief *klov_model_at(int32_t index);

/** The first catalogue row with this id, or null. */
KLOV_API const klov_model_brief *klov_printer_model_brief_find_by_id(uint32_t id);

/**
 * The first catalogue row with this model name, or null. The name "unknown" finds the closing row, whose class word has
 * every bit set: every command accepts it.
 */
KLOV_API const klov_model_brief *klov_printer_model_brief_find_by_name(const char *name);

/** The first catalogue row with this identity, or null. */
KLOV_API const klov_model_brief *klov_printer_model_brief_find_by_identity(const char *identity);

/**
 * Copies id, model_name, description and width of the LAST row with this id into *out; the other fields stay as they
 * are, and so does everything when no row has the id. 0 in both cases; -1 when `out` is null.
 */
KLOV_API int32_t klov_printer_model_brief_find_by_id2(uint32_t id, klov_model_brief *out);

/**
 * Name, type (the row's, without the id byte) and width in dots of the first row with this id. 0, or -8 when there is
 * none (nothing is stored then).
 */
KLOV_API int32_t klov_printer_model_get_info_by_id(uint32_t id, const char **name_out, int32_t *type_out,
                                                   int32_t *width_out);

/** Type and width of the first row with this model name, as klov_printer_model_get_info_by_id() gives them. */
KLOV_API int32_t klov_printer_model_get_info_by_name(const char *name, int32_t *type_out, int32_t *width_out);

/**
 * Lists a manufacturer's model names: each is followed by a tab, the whole by a NUL. A name that does not fit is left
 * out. *total_out (never null) receives the sum of the lengths of all names, tabs and NUL not counted, those left out
 * included. A buffer that is there receives at least the NUL, whatever `buffer_size` says; with a null buffer the names
 * are only counted. 0, or -1 with a total of 0 when the manufacturer has no models.
 */
KLOV_API int32_t klov_printer_model_get_manufacture_modelnames(const char *manufacturer, char *buffer,
                                                               int32_t buffer_size, int32_t *total_out);

/**
 * As klov_printer_model_get_manufacture_modelnames(), into a wide buffer of `buffer_size` BYTES. When there are models
 * the result is 0 and the buffer holds the NARROW text. When there are none the result is 1, which is no errno, the
 * total 0 and the buffer all zero.
 */
KLOV_API int32_t klov_printer_model_get_manufacture_modelnames_wchar(const char *manufacturer, wchar_t *wide_buffer,
                                                                     int32_t buffer_size, int32_t *total_out);

/* ---- Model instances ---- */

/**
 * Makes an instance from the first row with this id. *out is the new record, or null on failure. 0; -8 when no row
 * matches; -9 when memory runs out (calloc); -1 when `out` is null.
 */
KLOV_API int32_t klov_printer_model_creator(uint32_t id, klov_printer_model **out);

/** Makes an instance from the first row with this model name; results of klov_printer_model_creator(). */
KLOV_API int32_t klov_printer_model_creator2(const char *model_name, klov_printer_model **out);

/** Makes an instance from the first row with this identity; results of klov_printer_model_creator(). */
KLOV_API int32_t klov_printer_model_creator_by_identity(const char *identity, klov_printer_model **out);

/**
 * Refills a record of the caller's from the first row with this id. 0; -1 when it is null or its size tag is wrong; -8
 * when no row matches (the record is untouched) or when the family has no properties of its own (the record is filled,
 * with the default properties). `spare_list` is left alone.
 */
KLOV_API int32_t klov_printer_model_get_by_id(uint32_t id, klov_printer_model *model);

/** Refills a record from the first row with this model name; results of klov_printer_model_get_by_id(). */
KLOV_API int32_t klov_printer_model_get_by_name(const char *model_name, klov_printer_model *model);

/** Gives an instance back (free). 0, or -6 for null. */
KLOV_API int32_t klov_printer_model_destroy(klov_printer_model *model);

/**
 * Destroys the instances in models_table and returns the last destroy's result (0 when there are none). It is the last
 * call to the library: the table keeps its stale pointers, and the id queries must not be used after it.
 */
KLOV_API int32_t klov_printer_model_detach(void);

/* ---- Properties ---- */

/**
 * One property of a model. *type_out (never null) receives its type, *length_out its full length. `buffer` or
 * `length_out` may be null, not both; a buffer needs a size of at least 1.
 *
 * - int: 4 bytes, least significant first; a smaller buffer gets the low bytes, a larger one zeros behind; length 4.
 * - string: as many bytes as fit, no terminator, the rest of the buffer untouched; length without terminator.
 * - bool: 1 byte, the rest of the buffer untouched; length 1.
 * - Returns 0, or -1 for a bad argument, a wrong size tag or an unknown key (nothing is written then).
 */
KLOV_API int32_t klov_printer_model_get_property(const klov_printer_model *model, int32_t key, int32_t *type_out,
                                                 void *buffer, int32_t buffer_size, int32_t *length_out);

/** As klov_printer_model_get_property(); a string arrives as NARROW text with twice its length. */
KLOV_API int32_t klov_printer_model_get_property_wchar(const klov_printer_model *model, int32_t key, int32_t *type_out,
                                                       void *buffer, int32_t buffer_size, int32_t *length_out);

/**
 * As klov_printer_model_get_property(), on the library's own instance for an id, made at the first query of that id and
 * kept, also when the query itself fails. Also -8 for an id that is not in the catalogue, -9 when memory runs out.
 */
KLOV_API int32_t klov_printer_model_id_get_property(uint32_t id, int32_t key, int32_t *type_out, void *buffer,
                                                    int32_t buffer_size, int32_t *length_out);

/** As klov_printer_model_get_property_wchar(), on the library's own instance for an id. */
KLOV_API int32_t klov_printer_model_id_get_property_wchar(uint32_t id, int32_t key, int32_t *type_out, void *buffer,
                                                          int32_t buffer_size, int32_t *length_out);

#ifndef KLOV_NO_SHORT_NAMES

/* ---- Lists ---- */

/**
 * Splits a list such as `fonts` in place: returns the item at *position and moves *position behind it and its separator
 * (only the low 8 bits of `separator` count; 0 never separates), or returns null at the end of the text. Bit 0 of
 * `flags` skips blanks in front of the item, bit 1 removes the blanks behind the text's last item.
 */
KLOV_API char *get_item(char *text, int32_t *position, int32_t separator, int32_t flags);

#endif

#endif
