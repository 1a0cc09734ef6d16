// SPDX-License-Identifier: MIT
import com.sun.jna.Library;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import java.util.Map;

/** Asks the customer on USB how the service was, by way of JNA. */
public final class RateService {
  private static final int BAUD = 115200;
  private static final int SECONDS = 30;
  private static final int STARS = 5;

  /** As screens/evaluation.h declares them. */
  interface Gwq extends Library {
    Gwq LIBRARY = Native.load("libgwq.so.1", Gwq.class, Map.of(Library.OPTION_STRING_ENCODING, "UTF-8"));

    int MP_SetEvaluateInfo(Pointer ignored1, Pointer ignored2, int baud, String name, String number, int stars,
        String photo);

    int MP_StartEvaluate(Pointer ignored1, Pointer ignored2, int baud, int timeout, byte[] rating);
  }

  /** What a status means stands in interface.json, beside the list of functions. */
  private static void check(String call, int status) {
    if (status != 0) throw new IllegalStateException(call + ": status " + status);
  }

  public static void main(String[] args) {
    byte[] rating = new byte[2];
    check("MP_SetEvaluateInfo", Gwq.LIBRARY.MP_SetEvaluateInfo(null, null, BAUD, "王芳", "0123", STARS, null));
    check("MP_StartEvaluate", Gwq.LIBRARY.MP_StartEvaluate(null, null, BAUD, SECONDS, rating));
    System.out.println("rating: " + Native.toString(rating));
  }
}
