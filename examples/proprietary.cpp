// Decodes the receiver's own sentences: "$PKVN," and "$RD1".
#include <cstdio>
#include <cstring>

#include "geo/NotAvailable.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

static void ShowAttitude(C_VelaPKVN_Decode& decoder, char* sentence) {
  VelaPKVN_Messages::eMessageTypes type;
  U_VelaPKVN_EcdDcdData data;
  const unsigned int result = decoder.Decode(reinterpret_cast<unsigned char*>(sentence),
                                             static_cast<unsigned short>(std::strlen(sentence)), type, data);
  if (result != 0) {
    std::printf("refused with %u\n", result);
  } else if (type == VelaPKVN_Messages::ePkvnHPR) {
    const VelaPKVN_Messages::S_PKvnHpr& hpr = data.hpr;
    std::printf("heading %.2f, pitch %.2f, roll %s\n", hpr.heading, hpr.pitch,
                IsNotAvailable(hpr.roll) ? "not available" : "known");
  }
}

static void ShowDiagnostics(char* sentence) {
  C_VelaRD_Decode decoder;
  unsigned short version;
  U_VelaRD_EcdDcdData data;
  if (decoder.Decode(reinterpret_cast<unsigned char*>(sentence), static_cast<unsigned short>(std::strlen(sentence)),
                     version, data) == 0)
    std::printf("diagnostics at %.3f s of the week\n", data.signalDiag.timeOfWeek);
}

int main() {
  C_VelaPKVN_Decode decoder;
  char good[] = "$PKVN,HPR,120000.00,271.50,-1.25,,G*09\r\n";
  char damaged[] = "$PKVN,HPR,120000.00,371.50,-1.25,,G*09\r\n";
  ShowAttitude(decoder, good);
  ShowAttitude(decoder, damaged);
  std::printf("%u decoded\n", decoder.GetReceivedMsgCount(VelaPKVN_Messages::ePkvnHPR));

  char diagnostics[] = "$RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF\r\n";
  ShowDiagnostics(diagnostics);
  return 0;
}
