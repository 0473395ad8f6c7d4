// The result codes that all decoders and encoders share. Operations return them as `unsigned int`; 0 is success.
//
// The frame recognizer has results of its own (`eRecognitionResult`). docs/result-codes.md tells for each operation
// which codes it gives, what its outputs hold then, and what a host does about it.
//
// A failure never costs more than the frame at hand: the object that reported it takes the next one as if nothing had
// been. Codes are tested in the order of the checks, so that the first thing wrong is the one that is told; outputs are
// written as far as the checks got.
#ifndef VELAGNSS_RECORDS_RESULT_CODES_H
#define VELAGNSS_RECORDS_RESULT_CODES_H

// Numbers that are missing here are not used.
enum eResult : unsigned int {
  eResultOk = 0,              // done
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
