// The result codes that all decoders and encoders share. Operations return them as `unsigned int`; 0 is success.
//
// The frame recognizer has results of its own (`eRecognitionResult`).
#ifndef VELAGNSS_RECORDS_RESULT_CODES_H
#define VELAGNSS_RECORDS_RESULT_CODES_H

enum eResult : unsigned int {
  eResultOk = 0,
  eResultNull = 1,            // null buffer or argument
  eResultWrongSentence = 2,   // wrong or unknown sentence id
  eResultBadSync = 3,         // bad sync bytes or prefix
  eResultChecksum = 4,        // checksum mismatch
  eResultUnknownMessage = 5,  // unknown or unsupported message
  eResultNotText = 6,         // packed binary where text is decoded
  eResultWrongMessage = 7,    // not the message of the operation called
  eResultOutOfRange = 8,      // value or satellite number out of range
  eResultPastEnd = 9,         // read past the end of the buffer, or a sentence too long
  eResultBadField = 11,       // too few fields, or a field that does not parse
  eResultTalker = 16,         // a talker that cannot carry the field
  eResultTooShort = 19,       // buffer too short for the frame
  eResultTooLong = 20,        // frame too long, or its length does not match the buffer's
  eResultNoSeed = 22,         // week not resolvable: no seed time is set
};

#endif  // VELAGNSS_RECORDS_RESULT_CODES_H
