#ifndef OVIX_H
#define OVIX_H

/**
 * \file
 * ovix in C99: from the frames of thermal cameras to measurements, for programs in any language.
 *
 * What a caller opens is a handle. A handle serves one thread at a time; different handles serve different threads, and
 * ovix_share makes a second handle of a source that uses the tables of the first. Nothing is printed, no signal is
 * handled, no thread is started.
 *
 * Every function that can fail answers OVIX_OK (0), OVIX_END, or the number of what went wrong, which keeps its meaning
 * from version to version; ovix_last_error then tells the facts. Handles are written only by calls that succeed.
 *
 * Structures begin with their size in bytes, which the caller sets, so that programs and libraries of different age go
 * together: members that the caller's structure does not have are left out, members that the library does not know have
 * to be zero. All of an `ovix_options` that is zero stands for "as found". Text is UTF-8.
 */

#include <stddef.h>
#include <stdint.h>

#define OVIX_C_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** An opened source of frames, or one that takes what the caller pushes. */
typedef struct ovix_source ovix_source;
/** A recording that is being written. */
typedef struct ovix_recorder ovix_recorder;

/** What functions answer. The hundreds are the kinds on which a program decides. */
enum ovix_result {
    OVIX_OK = 0,
    OVIX_END = 1, /**< there is no further one; no error */

    OVIX_WRONG_ARGUMENT = 101,
    OVIX_UNIT_NOT_OFFERED = 102, /**< the source cannot give it; `expected` of the error lists those it can */
    OVIX_NO_SUCH_FRAME = 103,
    OVIX_NOT_NUMBERED = 104, /**< frames of a pipe come one after the other: ovix_next */

    OVIX_FILE_MISSING = 201,
    OVIX_FILE_UNREADABLE = 202,
    OVIX_FILE_UNWRITABLE = 203,
    OVIX_FILE_EXISTS = 204,
    OVIX_FILE_IS_INPUT = 205,
    OVIX_FILE_CHANGED = 206, /**< became shorter while it was read */
    OVIX_UNKNOWN_FORMAT = 207,

    OVIX_NO_FRAMES = 301,
    OVIX_BLOCKS_BROKEN = 302,
    OVIX_METADATA_DAMAGED = 303,
    OVIX_NO_DECODER = 304,
    OVIX_WRONG_GEOMETRY = 305,

    OVIX_FRAME_CUT = 401, /**< of the 400s: one frame; others can still be measured */
    OVIX_FRAME_REFUSED = 402,
    OVIX_PIXELS_DAMAGED = 403,
    OVIX_PRESET_OUT_OF_RANGE = 404,
    OVIX_SUM_DIFFERS = 405,

    OVIX_NO_CALIBRATION = 501,
    OVIX_CORRECTION_UNUSABLE = 502,
    OVIX_FIT_UNDETERMINED = 503,

    OVIX_HELPER_MISSING = 601,
    OVIX_SYSTEM_FAILED = 602, /**< no memory, too */
    OVIX_INTERRUPTED = 603
};

/** What is wanted. */
enum ovix_quantity {
    OVIX_AS_FOUND = 0, /**< temperature where the source can give it, else what it stores */
    OVIX_COUNTS = 1,
    OVIX_SIGNAL = 2,
    OVIX_RADIANCE = 3,
    OVIX_TEMPERATURE = 4,
    OVIX_RED = 5,
    OVIX_GREEN = 6,
    OVIX_BLUE = 7,
    OVIX_AVERAGE = 8 /**< of the three colours */
};
/** By whose calibration. */
enum ovix_calibration { OVIX_ANY_CALIBRATION = 0, OVIX_FACTORY = 1, OVIX_USER = 2 };
/** The scale of temperatures. */
enum ovix_scale { OVIX_CELSIUS = 0, OVIX_FAHRENHEIT = 1, OVIX_KELVIN = 2, OVIX_RANKINE = 3 };

/** What values are in. */
enum ovix_unit {
    OVIX_UNIT_UNKNOWN = -1, /**< not before the first frame that will do */
    OVIX_UNIT_COUNTS = 0,
    OVIX_UNIT_RADIANCE_USER = 1,    /**< W/(cm^2 sr) */
    OVIX_UNIT_TEMPERATURE_USER = 2, /**< in the scale asked for */
    OVIX_UNIT_SIGNAL = 3,           /**< counts, compensated for the scene */
    OVIX_UNIT_RADIANCE_FACTORY = 4,
    OVIX_UNIT_TEMPERATURE_FACTORY = 5,
    OVIX_UNIT_RED = 8,
    OVIX_UNIT_GREEN = 9,
    OVIX_UNIT_BLUE = 10,
    OVIX_UNIT_AVERAGE = 11
};

/** The values of the scene, places in ovix_options::scene. */
enum ovix_scene {
    OVIX_EMISSIVITY = 0,
    OVIX_DISTANCE = 1,       /**< metres */
    OVIX_REFLECTED_TEMP = 2, /**< kelvin, as all temperatures of a scene */
    OVIX_ATMOSPHERE_TEMP = 3,
    OVIX_EXT_OPTICS_TEMP = 4,
    OVIX_EXT_OPTICS_TRANS = 5,
    OVIX_ATMOSPHERE_TRANS = 6, /**< 0: computed */
    OVIX_RELATIVE_HUMIDITY = 7
};

/** Bits of ovix_options::flags. */
enum ovix_open_flag {
    OVIX_ACCEPT_DAMAGE = 1, /**< damaged metadata (a wrong CRC) are a finding and no error */
    OVIX_UNCORRECTED = 2,   /**< counts as recorded, whatever correction tables there are */
    OVIX_FOLLOW = 4         /**< the file grows: ovix_next waits for more */
};

/** How frames are to be taken, and what is to be made of them. */
typedef struct ovix_options {
    size_t size;
    /** Of raw frames: a registered name or GUID; "counts" and "counts-be" for plain 16-bit pixels, "auto" for what the
     * bytes of a file speak for. A recording says it itself. */
    const char* pixel_type;
    uint16_t width; /**< of raw frames, pixels */
    uint16_t height;
    uint32_t frame_size;  /**< bytes from one raw frame to the next; 0: as found */
    uint32_t flags;       /**< of ovix_open_flag */
    int32_t quantity;     /**< of ovix_quantity */
    int32_t calibration;  /**< of ovix_calibration */
    int32_t scale;        /**< of ovix_scale */
    uint32_t scene_given; /**< bit i: scene[i] takes the place of what is recorded */
    float scene[8];
    const char* correction; /**< stem of correction tables, for frames of all presets */
} ovix_options;

/** What a source is. Texts live as long as the handle. */
typedef struct ovix_information {
    size_t size;
    const char* name;
    const char* pixel_type; /**< as registered, or a GUID */
    int32_t is_recording;
    int32_t is_numbered; /**< its frames can be asked for by number */
    uint64_t frames;     /**< of a numbered source */
    uint64_t frame_size; /**< bytes; 0 when they differ */
    uint16_t width;
    uint16_t height;
    int32_t unit;     /**< of ovix_unit */
    uint32_t offered; /**< bit i: unit i can be had; 0 as long as the unit is not known */
    int32_t worst;    /**< of its findings: 0 note, 1 doubt, 2 damage; -1 for none */
} ovix_information;

/** Bits of ovix_frame::present: what the frame itself says. */
enum ovix_frame_fact { OVIX_HAS_TIME = 1, OVIX_YEAR_ASSUMED = 2, OVIX_HAS_COUNTER = 4, OVIX_HAS_PRESET = 8 };

/** Bits of a status byte. */
enum ovix_status {
    OVIX_OUTSIDE = 1, /**< of the calibrated range */
    OVIX_UNDER = 2,
    OVIX_OVER = 4,
    OVIX_NO_DATA = 32
};

/** A measured frame. Its pixels live in the handle until it measures again or is closed. */
typedef struct ovix_frame {
    size_t size;
    uint64_t number;       /**< in its source, from 0; of pushed frames the count of those before it */
    const float* values;   /**< width times height, in rows from the top */
    const uint8_t* status; /**< one byte a pixel, bits of ovix_status */
    uint16_t width;
    uint16_t height;
    int32_t unit;     /**< of ovix_unit */
    int32_t scale;    /**< of ovix_scale, of temperatures */
    uint32_t present; /**< of ovix_frame_fact; members that are not present are 0 */
    int64_t time;     /**< UTC, steps of 100 ns since the start of 1970 */
    uint64_t counter;
    uint8_t preset;
} ovix_frame;

/** Figures of the pixels of a region, of those whose status lets them count, in the frame's unit. */
typedef struct ovix_statistics {
    size_t size;
    uint32_t pixels; /**< of the region */
    uint32_t count;  /**< that count; the rest says nothing where there are none */
    double mean;
    double standard_deviation;
    double minimum;
    double maximum;
    uint16_t minimum_x; /**< places in the frame */
    uint16_t minimum_y;
    uint16_t maximum_x;
    uint16_t maximum_y;
} ovix_statistics;

/** One thing that a source is worth knowing for. Texts live until the next call with the handle. */
typedef struct ovix_finding {
    size_t size;
    int32_t id;     /**< keeps its meaning */
    int32_t weight; /**< 0 note, 1 doubt, 2 damage */
    int64_t frame;  /**< -1 for none, as of the offset */
    int64_t offset; /**< in the file */
    const char* block;
    const char* what;
    const char* expected;
    const char* found;
} ovix_finding;

/** A value that went into the frame measured last, and who said it. Texts live until the next call with the handle. */
typedef struct ovix_parameter {
    size_t size;
    const char* key;  /**< keeps its meaning: "reflected-temp" */
    const char* name; /**< for a reader */
    const char* unit; /**< "K"; empty for none */
    double value;
    int32_t origin; /**< 0 frame, 1 file, 2 default, 3 caller, 4 computed */
} ovix_parameter;

/** What went wrong. Texts live until the next call on this thread that fails; those that do not apply are empty. */
typedef struct ovix_error {
    size_t size;
    int32_t id;           /**< of ovix_result */
    int32_t system_error; /**< errno of a system call that failed; else 0 */
    int64_t frame;        /**< -1 for none, as of the offset */
    int64_t offset;       /**< byte in the frame where there is one, else in the file */
    const char* line;     /**< all facts in one line */
    const char* file;
    const char* block;
    const char* problem;
    const char* expected;
    const char* found;
    const char* advice;
} ovix_error;

/** The version of the library, "1.0.0". */
OVIX_C_API const char* ovix_version(void);

/** The facts of the last failure on this thread. OVIX_END when nothing failed yet. */
OVIX_C_API int ovix_last_error(ovix_error* error);

/** Opens a recording, a dump of raw frames, plain counts or a pipe ("-" is the standard input). Options may be NULL. */
OVIX_C_API int ovix_open(const char* path, const ovix_options* options, ovix_source** source);
/** A source of which the caller brings the frames: `pixel_type`, `width` and `height` of the options are needed. */
OVIX_C_API int ovix_open_stream(const ovix_options* options, ovix_source** source);
/** A second handle of an opened source, for another thread, with the same tables. Frames of a source that is not
 * numbered go to whoever asks first, and only one may ask at a time. */
OVIX_C_API int ovix_share(ovix_source* source, ovix_source** shared);
/** Closes a handle; NULL is passed over. */
OVIX_C_API void ovix_close(ovix_source* source);

/** What the source is. Reads its first frames where the unit is not known yet; when none of them will do the unit stays
 * OVIX_UNIT_UNKNOWN, and the first measurement tells why. */
OVIX_C_API int ovix_describe(ovix_source* source, ovix_information* information);
/** The findings of the source, those that showed while it was read included; OVIX_END behind the last. */
OVIX_C_API int ovix_finding_at(ovix_source* source, size_t index, ovix_finding* finding);

/** Measures a frame of a numbered source. */
OVIX_C_API int ovix_read(ovix_source* source, uint64_t number, ovix_frame* frame);
/** Measures the next frame of a pipe or a file that grows, and waits for it; OVIX_END at the end. */
OVIX_C_API int ovix_next(ovix_source* source, ovix_frame* frame);
/** Measures a frame as the camera delivered it, of a stream. The bytes are copied and stay as they are. */
OVIX_C_API int ovix_push(ovix_source* source, const void* bytes, size_t size, ovix_frame* frame);

/** Figures of a region of the frame measured last; of the whole frame when width and height are 0. */
OVIX_C_API int ovix_measure_region(ovix_source* source, uint16_t x, uint16_t y, uint16_t width, uint16_t height,
                                   ovix_statistics* statistics);
/** The values of the scene that went into the frame measured last; OVIX_END behind the last. */
OVIX_C_API int ovix_parameter_at(ovix_source* source, size_t index, ovix_parameter* parameter);

/** Bits of the flags of ovix_record. */
enum ovix_record_flag {
    OVIX_OVERWRITE = 1, /**< replace a file that is there */
    OVIX_KEEP_PART = 2, /**< leave PATH.part when the recording does not come to its end */
    OVIX_CHECKSUMS = 4, /**< a CRC of each frame, in a file beside the recording */
    OVIX_UNPACKED = 8   /**< say that frames are stored as the camera delivers them */
};
/** A recording of frames that the caller brings; `pixel_type`, `width` and `height` of the options are needed, its
 * scene and its correction go with the recording. It is written to PATH.part from the first frame on, whose metadata
 * are those of the recording. */
OVIX_C_API int ovix_record(const char* path, const ovix_options* options, uint32_t flags, ovix_recorder** recorder);
/** Appends a frame as the camera delivered it; one that its decoder would not take again is refused and not written.
 * All take `frame_size` bytes of the options, or as many as the first; shorter ones are filled up. What was answered
 * with OVIX_OK is in PATH.part, whatever becomes of the process. */
OVIX_C_API int ovix_record_frame(ovix_recorder* recorder, const void* bytes, size_t size);
/** All frames so far have reached the medium, where not even a power cut takes them from PATH.part. Takes as long as
 * the medium does: after each frame of a slow camera, or once a second. */
OVIX_C_API int ovix_record_flush(ovix_recorder* recorder);
/** Puts the frame counts in, makes the recording last and gives it its name. */
OVIX_C_API int ovix_record_finish(ovix_recorder* recorder);
/** Closes a handle; what was not finished goes, unless OVIX_KEEP_PART is set. NULL is passed over. */
OVIX_C_API void ovix_close_recorder(ovix_recorder* recorder);

#ifdef __cplusplus
}
#endif

#endif
