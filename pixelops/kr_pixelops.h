/* The pixel-operations library that the bundle exports: pixels, colour conversions, YUV frames, and pixel operations on
   OpenCL devices. For C and C++; nothing else needs to be included. docs/pixelops.md shows how to reach the functions.

   Conventions. Outputs come before inputs. Functions keep no state, throw nothing and may run on any number of threads
   at once, except those of the OpenCL modules (see there). Conversions of single colours return nothing; a null record
   makes them do nothing. All others return KR_OK, or KR_FAILED for whatever is wrong, and then have written nothing. */
#ifndef KR_PIXELOPS_H
#define KR_PIXELOPS_H

#include <stdint.h>

#ifndef CL_TARGET_OPENCL_VERSION
#define CL_TARGET_OPENCL_VERSION 120
#endif
#ifdef __APPLE__
#include <OpenCL/cl.h>
#else
#include <CL/cl.h>
#endif

#if !defined(_WIN32)
#define KR_EXPORT __attribute__((visibility("default")))
#elif defined(KR_PIXELOPS_BUILD)
#define KR_EXPORT __declspec(dllexport)
#else
#define KR_EXPORT __declspec(dllimport)
#endif

#define KR_OK ((int32_t)0)
#define KR_FAILED ((int32_t)0x80004005u)

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Pixels and colours */

/* Four bytes, 0..255, blue first in memory. Both names stand for the same layout. */
typedef struct KRRGBA {
    uint8_t blue, green, red, alpha;
} KRRGBA;
typedef struct KRDIBPIXEL {
    uint8_t blue, green, red, alpha;
} KRDIBPIXEL;

/* 0..1, red first in memory. */
typedef struct KRRGBAFLOAT {
    float red, green, blue, alpha;
} KRRGBAFLOAT;

/* Each 0..1; a hue of 1 is one full turn, and 0 is red. */
typedef struct KRHSL {
    double hue, saturation, lightness, alpha;
} KRHSL;

/* CIE L*a*b* of sRGB colours under D65: l 0..100, a and b around 0. */
typedef struct KRLAB {
    double l, a, b;
} KRLAB;

/* ---- HSL. Bytes are taken as 1/255; results are multiplied by 255 and truncated.

   To HSL: l is the mean of the largest and the smallest component, s their difference over 2 l or 2 - 2 l, whichever is
   smaller; greys have s = h = 0. Alpha is copied.

   From HSL: alpha is limited to 0..1. Colours are not limited: out of 0..1 (from s or l out of 0..1) floats are written
   as they come, and bytes as the low eight bits of the truncated number, which saturates at the ends of int32_t; NaN
   counts as 0. A lightness that gives no light (l (1 + s) <= 0) is black at any hue. Otherwise, a hue of 7/6 and more,
   or of -1/6 and less, leaves the colours as they were and writes alpha alone. */

KR_EXPORT void KRRGBA_To_KRHSL(KRHSL* hsl, const KRRGBA* rgba);
KR_EXPORT void KRHSL_To_KRRGBA(KRRGBA* rgba, const KRHSL* hsl);
KR_EXPORT void KRRGBAFLOAT_To_KRHSL(KRHSL* hsl, const KRRGBAFLOAT* rgba);
KR_EXPORT void KRHSL_To_KRRGBAFLOAT(KRRGBAFLOAT* rgba, const KRHSL* hsl);
KR_EXPORT void KRDIBPIXEL_To_KRHSL(KRHSL* hsl, const KRDIBPIXEL* pixel);
KR_EXPORT void KRDIBPIXEL_To_KRHSL_Float(KRHSL* hsl, const KRRGBAFLOAT* pixel);
KR_EXPORT void KRHSL_To_KRDIBPIXEL(KRDIBPIXEL* pixel, const KRHSL* hsl);
KR_EXPORT void KRHSL_To_KRDIBPIXEL_Float(KRRGBAFLOAT* pixel, const KRHSL* hsl);

/* Colours of user interfaces, packed. RGB: red in bits 0..7, green in 8..15, blue in 16..23. HSL: hue in bits 0..7,
   saturation in 8..15, lightness in 16..23, each 0..240; greys have hue 160. Integer arithmetic with rounding of its
   own: white has lightness 239. Bits 24..31 are ignored and come back as 0. */
KR_EXPORT uint32_t KrRGBtoHSL(uint32_t rgb);
KR_EXPORT uint32_t KrHSLtoRGB(uint32_t hsl);

/* ---- L*a*b*. Linearised by the sRGB curve; matrix and white point of D65 in four digits. On the way back components
   are limited to 0..1 (NaN counts as 0), bytes truncated, and alpha is left as it was. */

KR_EXPORT void KRRGBA_To_KRLAB(KRLAB* lab, const KRRGBA* rgba);
KR_EXPORT void KRLAB_To_KRRGBA(KRRGBA* rgba, const KRLAB* lab);
KR_EXPORT void KRRGBAFLOAT_To_KRLAB(KRLAB* lab, const KRRGBAFLOAT* rgba);
KR_EXPORT void KRDIBPIXEL_To_KRLAB(KRLAB* lab, const KRDIBPIXEL* pixel);
KR_EXPORT void KRDIBPIXEL_To_KRLAB_Float(KRLAB* lab, const KRRGBAFLOAT* pixel);
KR_EXPORT void KRLAB_To_KRDIBPIXEL_Float(KRRGBAFLOAT* pixel, const KRLAB* lab);

/* ---- YUV frames

   A frame is `height` rows of `width` pixels, from the top. A pointer names the top row, and a pitch is the distance in
   bytes from one row to the next, negative for pictures stored from the bottom; its size is at least that of a row.
   Only pixels are written, no padding between rows. Rows need no alignment; buffers must not overlap.

   fourcc has its first character in bits 0..7. Planes in the order in which the format stores them; those beyond are
   ignored.
       NV12        8 bits 4:2:0   Y, then U V pairs
       I420        8 bits 4:2:0   Y, U, V
       YV12        8 bits 4:2:0   Y, V, U
       YV16        8 bits 4:2:2   Y, V, U
       YUYV        8 bits 4:2:2   Y U Y V
       UYVY        8 bits 4:2:2   U Y V Y
       P010 P210 P410   10 bits 4:2:0, 4:2:2, 4:4:4   Y, then U V pairs; the high bits of little-endian 16-bit words
       v210       10 bits 4:2:2   six pixels in four little-endian 32-bit words: U Y V, Y U Y, V Y U, Y V Y from bit 0
   PL10 and A410 are known, but no layout is defined for them: they fail like unknown ones.
   The planes of a width that is odd have chroma for its last column, and packed formats whole groups of pixels, in
   which the last column is repeated; an odd height has chroma for its last row.

   Matrices: 0, 1, 2 are BT.601, BT.709, BT.2020 at full range (8 bits: 0..255 around 128; n bits: 0..2^n - 1 around
   2^(n - 1)); 3, 4, 5 are the same at nominal range (8 bits: luma 16..235, chroma 16..240; 10 bits: four times that).

   Each pair or square of pixels shares the mean of its chroma on the way to YUV, and the same chroma on the way back.
   Results are the real-valued matrix rounded to the nearest code and limited to the codes there are: to YUV within
   1/500 of a code, to RGB within 1/16. Fixed-point arithmetic with up to 22 fraction bits throughout. Alpha is ignored
   on the way to YUV, and 255 on the way back.

   KR_FAILED: a null pointer, a width or height of 0 or above 2^30, a pitch below a row's size, an unknown format or
   matrix. */
KR_EXPORT int32_t KrYUV_YUVToRGB(KRRGBA* rgba, int32_t rgbaPitch, const void* const planes[3], const int32_t pitches[3],
                                 uint32_t width, uint32_t height, uint32_t fourcc, uint32_t matrixIndex);
KR_EXPORT int32_t KrYUV_RGBToYUV(void* const planes[3], const int32_t pitches[3], const KRRGBA* rgba, int32_t rgbaPitch,
                                 uint32_t width, uint32_t height, uint32_t fourcc, uint32_t matrixIndex);

/* 8 bits 4:2:2 in three planes, full range. matrixCode: 515 BT.601, 516 BT.709, 517 BT.2020; any other code goes by the
   size: BT.709 from 720 rows on, else BT.601 from 704 to 720 columns, else BT.709. */
KR_EXPORT int32_t KrYUV422PlanarToRGBA(KRRGBA* rgba, int32_t rgbaPitch, uint32_t width, uint32_t height,
                                       const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                       const uint8_t* v, int32_t vPitch, uint32_t matrixCode);

/* ---- OpenCL modules

   A module is a set of kernels. Initialise it before its first operation, shut it down after the last; neither may run
   beside anything of the same module. Operations may run on any number of threads: each holds the table's call lock
   while it sets arguments and enqueues. They do not wait: results are there when the queue has come to them. Kernels
   and queue belong to the same context; images are 2-D, RGBA or BGRA, with normalised bytes or floats, row 0 first.
   Colours are premultiplied and read as 0..1 from bytes, as they are from floats; bytes are written rounded.

   Operations answer KR_FAILED when their module is not initialised, for null or unsuitable objects, and when an OpenCL
   call fails. */

/* The caller's table of OpenCL entry points: the C++ record that opencl/api.h declares, loaded. */
struct OpenCLApi;

/* Builds a program from OpenCL C source text. Flag 0: it is wanted now. Answers a cl_program, or null. */
typedef void* (*KrCompile)(const char* source, int32_t flag);

/* api: where the pointer to the table lies, both of which stay until the shutdown. Answers KR_OK; 1 when nothing was
   built, because the module is initialised already or compile is null or answers null or memory is short; KR_FAILED
   when there is no table, or a kernel could not be created (the module then waits for its shutdown). */
KR_EXPORT int32_t DibCopy_OpenCL_Initialize(struct OpenCLApi* const* api, KrCompile compile);
KR_EXPORT int32_t DibInterlace_OpenCL_Initialize(struct OpenCLApi* const* api, KrCompile compile);
KR_EXPORT int32_t DibComposite_OpenCL_Initialize(struct OpenCLApi* const* api, KrCompile compile);
KR_EXPORT int32_t VidHelp_OpenCL_Initialize(struct OpenCLApi* const* api, KrCompile compile);
KR_EXPORT int32_t YUV_OpenCL_Initialize(struct OpenCLApi* const* api, KrCompile compile);

/* Releases the module's kernels and program; nothing where there are none. */
KR_EXPORT void DibCopy_OpenCL_Shutdown(void);
KR_EXPORT void DibInterlace_OpenCL_Shutdown(void);
KR_EXPORT void DibComposite_OpenCL_Shutdown(void);
KR_EXPORT void VidHelp_OpenCL_Shutdown(void);
KR_EXPORT void YUV_OpenCL_Shutdown(void);

/* Pixels from (x1, y1) up to (x2, y2), in pixels from the outer corner of pixel (0, 0); fractions are parts of pixels.
 */
typedef struct KRRECTF {
    float x1, y1, x2, y2;
} KRRECTF;

/* DibCopy: shows one image's rectangle in another's, scaled to fit, bilinear with the rectangle's edge repeated.
   `ratio` > 0 enlarges the picture further, about the centre of its rectangle: at 2 its middle half is seen, at 0.5 it
   fills half of the rectangle's width and height, and the rest becomes transparent. Written are the pixels whose
   centres lie in destinationRect. Rectangles have a size and lie in their images. Two images are needed. At a ratio of
   0.999..1.001, with images of one format and rectangles whose sizes differ by less than 0.001, pixels are copied
   unchanged (clEnqueueCopyImage) from the nearest whole position. */
KR_EXPORT int32_t KrDibCopyOCL(cl_mem destination, const KRRECTF* destinationRect, cl_mem source,
                               const KRRECTF* sourceRect, float ratio, cl_command_queue queue);

/* DibInterlace: fields are the rows of one parity; field 0 has rows 0, 2, 4 ..., field 1 has rows 1, 3, 5 ... A frame
   of odd height has one row more in field 0. Pixels are not scaled; two images of the same width are needed. */
enum {
    KR_FIELD_WEAVE = 0,   /* source: the field alone; its rows become the field's rows of the destination, a frame */
    KR_FIELD_EXTRACT = 1, /* source: a frame; the field's rows become the destination, which has just those */
    KR_FIELD_COPY = 2,    /* two frames of the same height: the field's rows are copied to their places */
    KR_FIELD_DOUBLE = 3   /* two frames of the same height: the field's rows are copied, and each of the others becomes
                             the mean of the two beside it, at the edges a copy of the one beside it */
};
KR_EXPORT int32_t KrDibCopyInterlaceOCL(cl_mem destination, cl_mem source, uint32_t operation, uint32_t field,
                                        cl_command_queue queue);

/* DibComposite: destination = foreground o + background (1 - alpha(foreground) o), where o is the opacity, limited to
   0..1 (NaN fails). Pixel (0, 0) of the foreground lies on pixel (x, y) of the background; where there is no
   foreground, background is copied. Destination and background have one size; the destination is an image of its own.
 */
KR_EXPORT int32_t KrDibCompositeOCL(cl_mem destination, cl_mem background, cl_mem foreground, int32_t x, int32_t y,
                                    float opacity, cl_command_queue queue);

/* VidHelp: what pictures need between a decoder and an effect. Two images of one size are needed. */
enum {
    KR_SWAP_RED_BLUE = 0, /* red and blue change places */
    KR_PREMULTIPLY = 1,   /* colours are multiplied by alpha */
    KR_UNPREMULTIPLY = 2  /* and divided by it; without alpha, everything is 0 */
};
KR_EXPORT int32_t KrVidHelpOCL(cl_mem destination, cl_mem source, uint32_t operation, cl_command_queue queue);

/* YUV: as KrYUV_YUVToRGB and KrYUV_RGBToYUV. `rgba` is an image of width x height pixels at least, planes are buffers;
   a plane with a negative pitch starts with its bottom row. Computed in single precision. */
KR_EXPORT int32_t KrYUV_YUVToRGB_OCL(cl_mem rgba, const cl_mem planes[3], const int32_t pitches[3], uint32_t width,
                                     uint32_t height, uint32_t fourcc, uint32_t matrixIndex, cl_command_queue queue);
KR_EXPORT int32_t KrYUV_RGBToYUV_OCL(const cl_mem planes[3], const int32_t pitches[3], cl_mem rgba, uint32_t width,
                                     uint32_t height, uint32_t fourcc, uint32_t matrixIndex, cl_command_queue queue);

#ifdef __cplusplus
}
#endif

#endif
