#pragma once

// The part of tarvik.dll that Carrovan calls, as plain C: loaded at run time, each function found
// by its undecorated name. Texts are UTF-16 and end in zero. No function throws. A null pointer, or
// a handle that is null, closed or of the wrong kind, gives ArchiveResult::kNoSuchItem or no
// handle. Calls come from one thread at a time.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Identity of the installed product. The texts belong to the library and live as long as it is
// loaded; a fact that it does not know is an empty text, never null.
typedef const wchar_t* (*EyeTextFunction)(void);

const wchar_t* EyeGetProductName(void);          // "VANTRIC"
const wchar_t* EyeGetProductVersion(void);       // internal form, "28.0"
const wchar_t* EyeGetHumanRedableVersion(void);  // year form, "2026"; the name is spelled so
const wchar_t* EyeGetCompanyNameShort(void);     // "Vantric"
const wchar_t* APIGetAppStartupFolder(void);     // folder of the product's executables

enum { EYE_LANGUAGE_ID = 1033 };  // what callers pass

// The language the product runs in.
typedef struct EyeLangSupport EyeLangSupport;
struct EyeLangSupport {
  // Copies the current language's name ("en-us") with its zero into a buffer of `capacity`
  // characters. `languageId` is EYE_LANGUAGE_ID. Returns 1, or 0 when the name does not
  // fit; the buffer is then left alone.
  int (*currentLanguageName)(const EyeLangSupport* self, uint32_t languageId, wchar_t* buffer,
                             size_t capacity);
};

// Belongs to the library; null when the product has no language support.
typedef const EyeLangSupport* (*EyeGetLangSupportFunction)(void);
const EyeLangSupport* EyeGetLangSupport(void);

// Zip archives. Results are the numbers of carrovan::ArchiveResult, 0 for success. Passwords are
// not supported: opening or creating with one (anything but null) yields no handle.
typedef struct EyeZipArchive* EyeZipHandle;  // null is no archive

typedef struct EyeZipEntry {
  // Stored name with backslashes, of any length; empty when it does not decode. Valid until the
  // next call with the same handle.
  const wchar_t* name;
  uint64_t sizeBytes;
  uint64_t packedSizeBytes;
} EyeZipEntry;

typedef EyeZipHandle (*OpenZipFunction)(const wchar_t* path, const char* password);
typedef uint32_t (*ZipAddFunction)(EyeZipHandle zip, const wchar_t* entryName,
                                   const wchar_t* sourcePath);
typedef int (*IsZipHandleUFunction)(EyeZipHandle zip);
typedef uint32_t (*CloseZipFunction)(EyeZipHandle zip);
typedef uint32_t (*GetZipItemFunction)(EyeZipHandle zip, uint32_t index, EyeZipEntry* entry);
typedef uint32_t (*UnzipItemFunction)(EyeZipHandle zip, uint32_t index, const wchar_t* targetPath);
typedef OpenZipFunction CreateZipFunction;
typedef CloseZipFunction StoreZipItemsFunction;

// Starts an archive; a file at the path stays as it is until CloseZipZ succeeds.
EyeZipHandle CreateZip(const wchar_t* path, const char* password);

// Items that are added from now on are stored without compression and read by CloseZipZ, for an
// archive that is unpacked and deleted at once. A library may lack this function.
uint32_t StoreZipItems(EyeZipHandle zip);

// Stores a file under a name with backslashes; the file is read before this returns, unless items
// are stored without compression.
uint32_t ZipAdd(EyeZipHandle zip, const wchar_t* entryName, const wchar_t* sourcePath);

// Opens an archive for reading; null when the file is missing or is not a zip archive.
EyeZipHandle OpenZip(const wchar_t* path, const char* password);

// 1 for a handle of OpenZip, 0 for anything else.
int IsZipHandleU(EyeZipHandle zip);

// The item at a position, in stored order from 0; ArchiveResult::kNoSuchItem past the last one.
uint32_t GetZipItem(EyeZipHandle zip, uint32_t index, EyeZipEntry* entry);

// Writes an item to a file, creating missing parent folders; a file that is there is replaced only
// by complete data. Refuses an item whose stored name would leave a destination folder.
uint32_t UnzipItem(EyeZipHandle zip, uint32_t index, const wchar_t* targetPath);

// Finishes an archive of CreateZip and puts it in place. The handle is closed on failure too.
uint32_t CloseZipZ(EyeZipHandle zip);

// Closes an archive of OpenZip. An archive of CreateZip is given up: nothing is put in place.
uint32_t CloseZipU(EyeZipHandle zip);

#ifdef __cplusplus
}
#endif
