// The result codes that all decoders and encoders share. Operations return them as `unsigned int`; 0 is success.
//
// The frame recognizer has results of its own (`eRecognitionResult`). docs/result-codes.md lists the codes of each
// operation, what its outputs hold then, and what a host should do.
//
// A failure never affects more than the current frame: the object that reported it decodes the next one as usual. The
// code reports the first check that failed; outputs are written as far as the checks got.
#ifndef VELAGNSS_RECORDS_RESULT_CODES_H
#define VELAGNSS_RECORDS_RESULT_CODES_H

// Numbers that are not listed are not used.
enum eResult : unsigned int {
  eResultOk = 0,              // done
  eResultNull = 1,            // null buffer or argument
  eResultWrongSentence = 2,   // wrong or unknown sentence id
  eResultBadSync = 3,         // bad sync bytes or prefix
  eResultChecksum = 4,        // checksum missing or wrong
  eResultUnknownMessage = 5,  // unknown or unsupported message
  eResultNotText = 6,         // packed binary where text is decoded
  eResultWrongMessage = 7,    // not the message of the operation called
  eResultOutOfRange = 8,      // value or satellite number out of range
  eResultPastEnd = 9,         // the buffer ends before the value, or the sentence is too long
  eResultBadField = 11,       // too few fields, or a field that cannot be parsed
  eResultTalker = 16,         // a talker that cannot carry the field
  eResultTooShort = 19,       // buffer too short for the frame
  eResultTooLong = 20,        // frame too long, or its length differs from that of the buffer
  eResultNoSeed = 22,         // week not resolvable: no seed time is set
};

#endif  // VELAGNSS_RECORDS_RESULT_CODES_H
