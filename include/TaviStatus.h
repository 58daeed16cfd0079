/*
 * TaviStatus.h: the one family of status codes that the library and its host share.
 *
 * Every operation that reports a status returns SUCCESS or one of the negative codes below, and hands on
 * unchanged what an operation underneath it returned. A result below 1 is a failure.
 *
 * Compiles as C11 and as C++20.
 */
#ifndef TAVI_STATUS_H
#define TAVI_STATUS_H

enum TaviStatus {
  SUCCESS = 1, /* done */

  ERR_NO_MEMORY = -1,          /* an allocation failed, or a size exceeds what may be allocated */
  ERR_NO_BITMAP = -2,          /* the bitmap record is not valid or holds no pixels */
  ERR_FILE_WRITE = -5,         /* a write moved fewer bytes than it was asked to */
  ERR_FILE_READ = -7,          /* a read came back short: the file ends before the data that it announces */
  ERR_FILE_FORMAT = -9,        /* a signature or a required value of the file is wrong */
  ERR_FILE_NOT_FOUND = -10,    /* no file of that name exists */
  ERR_INVALID_PARAMETER = -13, /* a value is too long for its field or outside its set */
  ERR_FILE_OPEN = -14,         /* the file exists and cannot be opened */
  ERR_NOT_SUPPORTED = -16,     /* the operation, or the compression of an image, is not supported */
  ERR_INVALID_QFACTOR = -21,   /* a JPEG quality factor lies outside 2 to 255 */
  ERR_INVALID_BPP = -27,       /* a number of bits per pixel is not allowed */
  ERR_NOT_NITF = -78,          /* FVER is not "02.10" */
  ERR_NULL_HANDLE = -261,      /* a handle or a record is null */
  ERR_INVALID_VECTOR = -501,   /* the vector holds no drawing */
  ERR_NULL_ARGUMENT = -814,    /* a pointer argument is null */
  ERR_UNSUPPORTED_PVTYPE = -700000,     /* PVTYPE of an image begins with neither "I" nor "B" */
  ERR_UNSUPPORTED_CLEVEL = -700001,     /* CLEVEL is not "03" */
  ERR_UNSUPPORTED_BPP = -700002,        /* NBPP is 16 in an image of several bands */
  ERR_UNSUPPORTED_COMPRESSION = -700003 /* an embedded stream is of a format that is not accepted */
};

#endif /* TAVI_STATUS_H */
