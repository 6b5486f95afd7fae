/*
 * ksv_lacking.h : a header whose comments have gaps, which the reference has to tell.
 */

/* A function with a comment.
 *
 *   argument   a number
 */
KSV_API int withComment(int argument);

/* Describes an argument that is not there.
 *
 *   noSuchArgument   a number */
KSV_API int withWrongComment(int argument);

KSV_API int withoutComment(int argument);

/* A record with a field that nothing tells of. */
typedef struct Lacking {
  int field;
  int other; /* this one is told of */
} Lacking;
