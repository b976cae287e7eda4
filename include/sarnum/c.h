/// @file
/// The interface for new programs in plain C (C99 or C++), and for every language and compiler that
/// can call C. C++ programs can use it through sarnum/cxx.hpp. A whole call:
///
///     float line[2 * 1024] = {1};  // 1024 samples, interleaved
///     sarnum_plan* plan = NULL;
///     sarnum_status status = sarnum_plan_create(1024, SARNUM_FLOAT32, &plan);
///     if (status == SARNUM_OK) {
///       status = sarnum_transform(plan, SARNUM_FORWARD, SARNUM_UNSCALED, line, NULL);
///     }
///     if (status != SARNUM_OK) {
///       fprintf(stderr, "%s\n", sarnum_error_message());
///     }
///     sarnum_plan_destroy(plan);
///
/// To load the library at run time, open `libsarnum.so.1`, or `sarnum.dll` on Windows, and find the
/// functions by name. The loader must find `libsarnum_host.so.1` or `sarnum_host.dll` too: this
/// second library is the host, which reads and writes image files. (A library that was built for
/// another host needs that one instead.)
///
/// What holds for every function:
///
/// - **Result.** A function that can fail returns a sarnum_status, 0 on success.
///   sarnum_error_message() then says in one sentence which argument was wrong, its value, and
///   what to do.
/// - **Refused arguments.** Every argument is checked before anything is written. When an argument
///   is refused, no array and no file has been touched. Only the size of the memory behind a
///   pointer cannot be checked: it is the caller's part.
/// - **Units.** Lengths and counts are numbers of samples (`size_t`). Strides are distances in
///   samples (`ptrdiff_t`) and may be negative. Distances between rows of an image are in bytes.
/// - **Complex samples.** Either *split*, all real parts in one array and all imaginary parts in
///   another, or *interleaved*, the real part of each sample directly before its imaginary part:
///   pass the array as `re` and NULL as `im`. A sample is one complex number in both layouts, so
///   strides are the same numbers.
/// - **Alignment.** Arrays of float or double begin at a multiple of 4 or 8 bytes. Rows of images
///   may begin anywhere.
/// - **Options.** Where a function takes `options`, they say how the call runs: on how many
///   threads, and which function to call with its progress. NULL means one thread and no progress.
/// - **Threads.** Every function may run on any number of threads at once, on different output. A
///   plan may be used by all of them.
/// - **Values** are the same on every CPU and for any number of threads. Samples that are NaN or
///   infinite are not refused: in a transform they can make every number of the same line, or of
///   the same image, NaN or infinite, but none of another line.
/// - No function prints, ends the process or lets a C++ exception out.
#ifndef SARNUM_C_H
#define SARNUM_C_H

#include <stddef.h>
#include <stdint.h>

#if !defined(SARNUM_C_API)
#if defined(_WIN32) && defined(SARNUM_BUILDING)
#define SARNUM_C_API __declspec(dllexport)
#elif defined(_WIN32) && !defined(SARNUM_STATIC)
#define SARNUM_C_API __declspec(dllimport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define SARNUM_C_API __attribute__((visibility("default")))
#else
#define SARNUM_C_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

// --- Status ------------------------------------------------------------------------------------

/// What a call came to: one of the following. Later versions may add codes; treat a code that you
/// do not know as a failure.
typedef int32_t sarnum_status;
enum {
  SARNUM_OK = 0,
  SARNUM_INVALID_ARGUMENT = 1,  ///< an argument is outside its stated range; nothing was touched
  SARNUM_NO_MEMORY = 2,         ///< work storage could not be allocated; nothing was touched
  /// The progress callback asked to stop; the output may be incomplete. In place, some lines are
  /// done and others are not: begin again from a copy.
  SARNUM_CANCELLED = 3,
  SARNUM_SINGULAR = 4,     ///< a matrix has no inverse; not yet returned by any function
  SARNUM_FILE_ERROR = 5,   ///< a file could not be opened, created, read or written
  SARNUM_UNSUPPORTED = 6,  ///< lawful, but this version does not have it; nothing was touched
  SARNUM_FAILED = 7        ///< anything else; the message has what is known
};

/// Why the last failing call on this thread failed: one sentence in UTF-8. "" before the first
/// failure. Never NULL. Valid until the next failure on the same thread.
SARNUM_C_API const char* sarnum_error_message(void);

/// Version of the loaded library, "major.minor.patch". Programs built with this header run with
/// every later library of the same major version.
SARNUM_C_API const char* sarnum_version(void);

// --- How a call runs ---------------------------------------------------------------------------

/// Called from time to time while a function works, with the part of the work that is done: a
/// number from 0 to 1 that never falls. The first number is 0; the last one is 1 if nothing stops
/// the work. Without any work (a count of 0) it is not called.
///
/// Return 0 to go on. After any other value each thread does at most one more row, line, group of
/// short lines or block of columns, and the function returns SARNUM_CANCELLED, even if all work was
/// done. The callback is called only on the thread that called the function, which waits meanwhile,
/// so keep it short. It must return normally: no exception, no longjmp.
typedef int (*sarnum_progress)(void* context, double fraction);

/// How a call runs. Begin with SARNUM_OPTIONS_INIT, which fills in the defaults:
///
///     sarnum_options options = SARNUM_OPTIONS_INIT;
///     options.threads = 2;
typedef struct sarnum_options {
  /// sizeof(sarnum_options) of the header that the caller was compiled with. Later versions add
  /// members at the end. A library that is newer than the header uses the defaults of members that
  /// the header lacks. A library that is older accepts members that it does not know if they are 0;
  /// others are SARNUM_UNSUPPORTED.
  size_t size;
  /// Threads to work on: 1 to 1024, or 0 for one per processor. The calling thread is one of them;
  /// the others are made for the call and have ended when it returns. Where the system does not
  /// provide a thread, the call goes on with fewer. Work that is smaller than what a thread's start
  /// is worth stays on the calling thread: see each function. Default 1.
  ptrdiff_t threads;
  /// Whom to tell of progress, or NULL. Default NULL.
  sarnum_progress progress;
  /// First argument of `progress`. Default NULL.
  void* context;
} sarnum_options;

#define SARNUM_OPTIONS_INIT \
  { sizeof(sarnum_options), 1, NULL, NULL }

// --- Pixel types -------------------------------------------------------------------------------

/// Type of the pixels of an image, or of the numbers in an array. A complex pixel is two numbers,
/// the real part first.
typedef int32_t sarnum_type;
enum {
  SARNUM_UINT8 = 1,
  SARNUM_INT8 = 2,
  SARNUM_UINT16 = 3,
  SARNUM_INT16 = 4,
  SARNUM_UINT32 = 5,
  SARNUM_INT32 = 6,
  SARNUM_FLOAT32 = 7,
  SARNUM_FLOAT64 = 8,
  SARNUM_COMPLEX_FLOAT32 = 9,
  SARNUM_COMPLEX_FLOAT64 = 10,
  SARNUM_COMPLEX_UINT8 = 11,
  SARNUM_COMPLEX_INT8 = 12,
  SARNUM_COMPLEX_UINT16 = 13,
  SARNUM_COMPLEX_INT16 = 14,
  SARNUM_COMPLEX_UINT32 = 15,
  SARNUM_COMPLEX_INT32 = 16
};

// --- Fourier transforms of lines ---------------------------------------------------------------

/// What a transform needs to know of one length and precision: its twiddle factors, in the order in
/// which this CPU wants them. A plan never changes after it was made. Make it once, use it often,
/// from any number of threads at the same time, beside plans of other lengths.
typedef struct sarnum_plan sarnum_plan;

/// Makes a plan for lines of n samples.
///
/// @param n          1 to 2^30. A length in that range that is not a power of two is
///                   SARNUM_UNSUPPORTED.
/// @param precision  SARNUM_FLOAT32 or SARNUM_FLOAT64: the type of the numbers that the plan
///                   transforms, and of all arithmetic.
/// @param plan       receives the plan; unchanged on failure. It takes 2·n numbers of memory.
SARNUM_C_API sarnum_status sarnum_plan_create(size_t n, sarnum_type precision, sarnum_plan** plan);

/// Releases a plan that no call uses any more. NULL is allowed and does nothing.
SARNUM_C_API void sarnum_plan_destroy(sarnum_plan* plan);

/// The length n that a plan was made for; 0 for NULL.
SARNUM_C_API size_t sarnum_plan_length(const sarnum_plan* plan);
/// The precision that a plan was made for; 0 for NULL.
SARNUM_C_API sarnum_type sarnum_plan_precision(const sarnum_plan* plan);

/// Which way a transform goes.
typedef int32_t sarnum_direction;
enum {
  SARNUM_FORWARD = 1,  ///< X[k] = Σ x[j]·exp(−2πi·j·k/n)
  SARNUM_INVERSE = 2   ///< x[j] = Σ X[k]·exp(+2πi·j·k/n)
};

/// The factor by which a transform multiplies its results. A forward and an inverse transform
/// together give the input back when one has SARNUM_BY_LENGTH and the other SARNUM_UNSCALED, or
/// both have SARNUM_BY_ROOT.
typedef int32_t sarnum_scaling;
enum {
  SARNUM_UNSCALED = 1,   ///< 1: results stay as they are
  SARNUM_BY_LENGTH = 2,  ///< 1/n: results are divided by n
  SARNUM_BY_ROOT = 3     ///< 1/√n, rounded to the plan's precision: keeps Σ|x|²
};

/// Transforms one line of n adjoining samples in place.
///
/// @param re  n real parts; or 2·n numbers, interleaved, if im is NULL.
/// @param im  n imaginary parts, or NULL. Must not overlap re.
SARNUM_C_API sarnum_status sarnum_transform(const sarnum_plan* plan, sarnum_direction direction,
                                            sarnum_scaling scaling, void* re, void* im);

/// Transforms many lines in place, each to the values that sarnum_transform() gives for it.
///
/// Sample j of line k is at index j·stride + k·distance of `re` and of `im`. All rows of an image
/// with n columns: stride 1, distance n. All columns of an image with n rows and c columns: stride
/// c, distance 1.
///
/// @param re, im    as in sarnum_transform(). im may lie in gaps of re, between samples or between
///                  lines, if they share no number.
/// @param count     number of lines; 0 does nothing, and re may then be NULL.
/// @param stride    from a sample to the next sample of its line; not 0. Positive or negative.
/// @param distance  from a line to the next line. Lines must lie one after another,
///                  |distance| ≥ (n − 1)·|stride| + 1, or be interleaved as columns are,
///                  |stride| ≥ (count − 1)·|distance| + 1 with distance not 0. Other arrangements
///                  are refused, even those that share no sample. Ignored when count is 1.
/// @param options   fewer than 2^17 samples (n·count) stay on the calling thread.
SARNUM_C_API sarnum_status sarnum_transform_lines(
    const sarnum_plan* plan, sarnum_direction direction, sarnum_scaling scaling, void* re, void* im,
    size_t count, ptrdiff_t stride, ptrdiff_t distance, const sarnum_options* options);

/// Compresses lines by a reference in place (range compression, matched filter): replaces each line
/// x by its circular correlation with the reference r,
///
///     y[j] = Σ x[(j + i) mod n]·conj(r[i]),  i = 0 … reference_count − 1
///
/// An echo a·r that begins at sample j of a line gives its peak, a·Σ|r|², at y[j]. Computed as the
/// inverse transform, divided by n, of X·conj(R), where X and R are the forward transforms of the
/// line and of the reference followed by zeros. To keep echoes at the end of a line from wrapping
/// to its beginning, let n be at least the length of the line plus reference_count − 1, and follow
/// the line by zeros. Multiply the reference by a window before the call to lower side lobes.
///
/// 512 lines of 4096 samples in an interleaved array `echo`, a plan for 4096 samples of
/// SARNUM_FLOAT32, and a chirp of 800 samples, interleaved too:
///
///     status = sarnum_compress_lines(plan, chirp, NULL, 800, echo, NULL, 512, 1, 4096, NULL);
///
/// @param reference_re, reference_im  the reference in time, adjoining samples of the plan's
///                 precision, split or interleaved as re and im may be; only read. Must lie outside
///                 the range from the first to the last number of the lines, gaps included. Both
///                 may be the same array.
/// @param reference_count  1 to n.
/// @param re, im, count, stride, distance, options  the lines, as in sarnum_transform_lines().
SARNUM_C_API sarnum_status sarnum_compress_lines(const sarnum_plan* plan, const void* reference_re,
                                                 const void* reference_im, size_t reference_count,
                                                 void* re, void* im, size_t count, ptrdiff_t stride,
                                                 ptrdiff_t distance, const sarnum_options* options);

// --- Fourier transforms of images --------------------------------------------------------------
//
// An image is given by an array of pointers to its rows. Rows need not adjoin. Rows of the target
// must not overlap each other. Row k of the target may begin where row k of the source begins
// (transform in place); otherwise no row of the target may overlap a row of the source. In place, C
// needs a cast for the source:
//
//     void* rows[64];  // the address of each row
//     sarnum_transform_2d(plan, plan, SARNUM_FORWARD, SARNUM_UNSCALED, SARNUM_COMPLEX_FLOAT32,
//                         (const void* const*)rows, 64, 64, rows, NULL);
//
// Fewer than 2^17 pixels in the target stay on the calling thread. Progress is called after each
// row and each block of columns.

/// Transforms an image by plans, in full precision: every row by sarnum_transform() with row_plan,
/// then every column of the result with column_plan.
///
/// Let N1 and N2 be the lengths of the two plans. Pixels right of the source and rows below it
/// count as 0, up to N1 columns and N2 rows.
///
/// @param row_plan, column_plan  of equal precision; both may be the same plan.
/// @param scaling  applied to rows with n = N1, then to columns with n = N2: SARNUM_BY_LENGTH
///                 divides by N1·N2 in all.
/// @param type     pixel type of the source. Its numbers are converted to the plans' precision.
/// @param source   `height` pointers to rows of `width` pixels; only read.
/// @param width    1 to N1.
/// @param height   1 to N2.
/// @param target   N2 pointers to rows with room for N1 complex pixels of the plans' precision,
///                 interleaved. All are written.
SARNUM_C_API sarnum_status sarnum_transform_2d(const sarnum_plan* row_plan,
                                               const sarnum_plan* column_plan,
                                               sarnum_direction direction, sarnum_scaling scaling,
                                               sarnum_type type, const void* const* source,
                                               size_t width, size_t height, void* const* target,
                                               const sarnum_options* options);

/// Transforms an image to the values of the library's classic C++ interface (sarnum/sarnum.h:
/// CFFTClass::FFT_2D and CFFTClass::IFFT_2D), without plans. Where you need not match those values,
/// use sarnum_transform_2d().
///
/// Let N1 and N2 be the least powers of two not below width and height.
///
/// Forward: the source is followed by zeros up to N1 columns and N2 rows, and the result is divided
/// by N1·N2. A target of SARNUM_COMPLEX_FLOAT32 is computed in double and rounded to float after
/// each butterfly. (Complex unsigned integers, which the classic function does not read, are
/// converted like the others.)
///
/// Inverse: not scaled. The source has type SARNUM_COMPLEX_FLOAT32 or SARNUM_COMPLEX_FLOAT64, and
/// sides that are powers of two. In both types each butterfly is rounded to float.
///
/// @param source   `height` pointers to rows of `width` pixels of `type`; only read.
/// @param width, height  1 to 2^30.
/// @param target   N2 pointers to rows with room for N1 complex pixels, interleaved. All are
///                 written. They are SARNUM_COMPLEX_FLOAT64 if `type` is SARNUM_FLOAT64 or
///                 SARNUM_COMPLEX_FLOAT64, and SARNUM_COMPLEX_FLOAT32 for all other types.
SARNUM_C_API sarnum_status sarnum_transform_raster(sarnum_direction direction, sarnum_type type,
                                                   const void* const* source, size_t width,
                                                   size_t height, void* const* target,
                                                   const sarnum_options* options);

// --- Multilooking ------------------------------------------------------------------------------

/// What is averaged for a pixel z.
typedef int32_t sarnum_detection;
enum {
  SARNUM_AS_IS = 0,      ///< z itself; real pixels only
  SARNUM_INTENSITY = 1,  ///< |z|²
  SARNUM_AMPLITUDE = 2   ///< |z|
};

/// How looks are averaged. Begin with SARNUM_MULTILOOK_INIT(across, down):
///
///     sarnum_multilook_options looks = SARNUM_MULTILOOK_INIT(4, 2);
///     looks.detection = SARNUM_INTENSITY;
typedef struct sarnum_multilook_options {
  size_t size;                 ///< sizeof(sarnum_multilook_options), as in sarnum_options
  size_t looks_across;         ///< columns averaged into one, at least 1
  size_t looks_down;           ///< rows averaged into one, at least 1
  sarnum_detection detection;  ///< what is averaged. Default SARNUM_AS_IS
  /// 1: the mean of the samples that are not NaN, or NaN if there are none. 0, the default: NaN if
  /// one of them is NaN.
  int32_t skip_nan;
} sarnum_multilook_options;

#define SARNUM_MULTILOOK_INIT(across, down) \
  { sizeof(sarnum_multilook_options), (across), (down), SARNUM_AS_IS, 0 }

/// Averages an image over adjoining rectangles of looks (noncoherent multilooking).
///
/// The target has ceil(width / looks_across) columns and ceil(height / looks_down) rows. The last
/// ones average the pixels that exist. Each sum runs in double, row after row and from left to
/// right. If target_type is SARNUM_FLOAT32, the mean is (float)sum / (float)count, otherwise
/// sum / count; `count` leaves out NaNs that are skipped. Detected values are computed in double.
/// For L independent looks of intensity the variance of speckle falls to mean²/L.
///
/// @param type              pixel type of the source. Complex pixels need a detection.
/// @param source            first row of the source; only read.
/// @param width, height     size of the source, at least 1.
/// @param source_row_bytes  from a row of the source to the next one; may be negative.
/// @param target_type       SARNUM_FLOAT32 or SARNUM_FLOAT64.
/// @param target            first row of the target. No row of it may overlap another one or the
///                          source.
/// @param target_row_bytes  from a row of the target to the next one; may be negative.
/// @param options           fewer than 2^17 pixels in the source stay on the calling thread.
SARNUM_C_API sarnum_status sarnum_multilook(sarnum_type type, const void* source, size_t width,
                                            size_t height, ptrdiff_t source_row_bytes,
                                            sarnum_type target_type, void* target,
                                            ptrdiff_t target_row_bytes,
                                            const sarnum_multilook_options* looks,
                                            const sarnum_options* options);

/// Averages the first band of an image file into a new file of SARNUM_FLOAT32. Values are those of
/// sarnum_multilook() for the samples of the file read as SARNUM_FLOAT32.
///
/// Holds a strip of looks_down input rows and one output row in memory; on several threads as many
/// of these for each as give it 2^17 samples, and at least one. Files are read and written on the
/// calling thread. A failure to open, read, create, write or close a file is SARNUM_FILE_ERROR, and
/// the message names the file and the reason. After a failure or cancelling, a file that this call
/// created is removed. Memory for a strip that cannot be allocated is SARNUM_NO_MEMORY or, if the
/// host reports it, SARNUM_FILE_ERROR.
///
/// Paths are in the encoding that the host takes: UTF-8, but on Windows the system's character set
/// for 8-bit names.
///
/// @param input_path   image with one real sample per pixel, in a format that the host opens: what
///                     GDAL opens or, in a build without GDAL, flat samples with an ENVI header.
/// @param output_path  file to create. It must not exist: an existing file is SARNUM_FILE_ERROR and
///                     stays as it is.
/// @param options      files of fewer than 2^17 samples stay on the calling thread. Progress counts
///                     rows of the output.
SARNUM_C_API sarnum_status sarnum_multilook_file(const char* input_path, const char* output_path,
                                                 const sarnum_multilook_options* looks,
                                                 const sarnum_options* options);

#ifdef __cplusplus
}
#endif

#endif
