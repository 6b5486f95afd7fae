/* Every offset and size of the records of ksv_cconv.h, checked while compiling,
 * as C and as C++. Include ksv_cconv.h first. */
#include <assert.h>
#include <stddef.h>

#ifdef __cplusplus
#define KSV_ALIGNMENT(type) alignof(type)
#define KSV_FIELD_SIZE(record, field) sizeof(record::field)
#else
#define KSV_ALIGNMENT(type) _Alignof(type)
#define KSV_FIELD_SIZE(record, field) sizeof(((record*)0)->field)
#endif

#define KSV_FIELD(record, place, size, field)                                      \
  static_assert(offsetof(record, field) == (place), #record "." #field " offset"); \
  static_assert(KSV_FIELD_SIZE(record, field) == (size), #record "." #field " size")

static_assert(sizeof(ConvertOptions) == 288, "ConvertOptions size");
static_assert(KSV_ALIGNMENT(ConvertOptions) == 2, "ConvertOptions alignment");
KSV_FIELD(ConvertOptions, 0, 4, outputBigEndian);
KSV_FIELD(ConvertOptions, 4, 4, writeByteOrderMark);
KSV_FIELD(ConvertOptions, 8, 4, replaceUnmappable);
KSV_FIELD(ConvertOptions, 12, 2, narrowReplacement);
KSV_FIELD(ConvertOptions, 14, 2, wideReplacement);
KSV_FIELD(ConvertOptions, 16, 260, defaultLanguage);
KSV_FIELD(ConvertOptions, 276, 2, unused);
KSV_FIELD(ConvertOptions, 278, 4, convertNewlines);
KSV_FIELD(ConvertOptions, 282, 4, newlineForm);
KSV_FIELD(ConvertOptions, 286, 2, supplementaryMode);

static_assert(sizeof(ConverterRecord) == 1272, "ConverterRecord size");
static_assert(KSV_ALIGNMENT(ConverterRecord) == 8, "ConverterRecord alignment");
KSV_FIELD(ConverterRecord, 0, 8, input);
KSV_FIELD(ConverterRecord, 8, 4, inputPosition);
KSV_FIELD(ConverterRecord, 12, 4, inputLength);
KSV_FIELD(ConverterRecord, 16, 4, charactersRead);
KSV_FIELD(ConverterRecord, 24, 8, output);
KSV_FIELD(ConverterRecord, 32, 4, outputPosition);
KSV_FIELD(ConverterRecord, 36, 4, outputCapacity);
KSV_FIELD(ConverterRecord, 40, 4, unitsWritten);
KSV_FIELD(ConverterRecord, 44, 4, status);
KSV_FIELD(ConverterRecord, 48, 4, sourceCharsetId);
KSV_FIELD(ConverterRecord, 56, 8, sourceCharset);
KSV_FIELD(ConverterRecord, 64, 8, sourceDecoder);
KSV_FIELD(ConverterRecord, 72, 4, decodedGroup);
KSV_FIELD(ConverterRecord, 76, 4, decodedGroupType);
KSV_FIELD(ConverterRecord, 80, 4, decoderState);
KSV_FIELD(ConverterRecord, 84, 4, preConversion);
KSV_FIELD(ConverterRecord, 88, 4, targetCharsetId);
KSV_FIELD(ConverterRecord, 96, 8, targetCharset);
KSV_FIELD(ConverterRecord, 104, 8, targetEncoder);
KSV_FIELD(ConverterRecord, 112, 4, targetGroup);
KSV_FIELD(ConverterRecord, 116, 4, targetGroupType);
KSV_FIELD(ConverterRecord, 120, 4, designatedGroup);
KSV_FIELD(ConverterRecord, 124, 4, designatedPlane);
KSV_FIELD(ConverterRecord, 128, 4, rawCode);
KSV_FIELD(ConverterRecord, 132, 4, groupCode);
KSV_FIELD(ConverterRecord, 136, 4, unicodeCode);
KSV_FIELD(ConverterRecord, 140, 4, outputCode);
KSV_FIELD(ConverterRecord, 144, 2, outputWidth);
KSV_FIELD(ConverterRecord, 146, 2, sequenceLength);
KSV_FIELD(ConverterRecord, 148, 4, previousRawCode);
KSV_FIELD(ConverterRecord, 152, 4, secondCode);
KSV_FIELD(ConverterRecord, 156, 260, defaultLanguage);
KSV_FIELD(ConverterRecord, 416, 260, emittedLanguage);
KSV_FIELD(ConverterRecord, 676, 260, currentLanguage);
KSV_FIELD(ConverterRecord, 936, 4, inputBigEndian);
KSV_FIELD(ConverterRecord, 940, 4, detectByteOrderMark);
KSV_FIELD(ConverterRecord, 944, 4, skipInvalid);
KSV_FIELD(ConverterRecord, 948, 288, options);
KSV_FIELD(ConverterRecord, 1236, 16, narrowReplacement);
KSV_FIELD(ConverterRecord, 1252, 16, wideReplacement);

static_assert(sizeof(EncodingCheckRecord) == 296, "EncodingCheckRecord size");
static_assert(KSV_ALIGNMENT(EncodingCheckRecord) == 8, "EncodingCheckRecord alignment");
KSV_FIELD(EncodingCheckRecord, 0, 8, input);
KSV_FIELD(EncodingCheckRecord, 8, 4, position);
KSV_FIELD(EncodingCheckRecord, 12, 4, end);
KSV_FIELD(EncodingCheckRecord, 16, 260, name);
KSV_FIELD(EncodingCheckRecord, 276, 4, declared);
KSV_FIELD(EncodingCheckRecord, 280, 4, mark);
KSV_FIELD(EncodingCheckRecord, 284, 4, bigEndian);
KSV_FIELD(EncodingCheckRecord, 288, 4, lineEnd);
KSV_FIELD(EncodingCheckRecord, 292, 4, resultClass);
