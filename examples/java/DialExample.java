// Sends a Dial and reads what comes back, in Java, with the lite classes that Android uses. See
// README.md. The schema's units without a package become outer classes of the default package: Radio,
// ImsService, CallSize, Conference.

import com.google.protobuf.InvalidProtocolBufferException;
import com.google.protobuf.UninitializedMessageException;
import java.util.HexFormat;

final class DialExample {
  public static void main(String[] arguments) throws Exception {
    HexFormat hex = HexFormat.of();

    // The telephony side fills a request. build() throws when a required field is missing.
    Radio.Dial dial =
        Radio.Dial.newBuilder()
            .setPlatformtype(Radio.PlatformType.QCOM)
            .setSerial(7)
            .setAddress("+15551234567")
            .setClir(Radio.Clir.CLIR_DEFAULT)
            .build();
    byte[] request = dial.toByteArray();
    System.out.println("request   " + hex.formatHex(request));

    // The modem side answers with the serial of the request.
    Radio.Dial received = Radio.Dial.parseFrom(request);
    byte[] response =
        Radio.NoResultResponse.newBuilder()
            .setPlatformtype(received.getPlatformtype())
            .setSerial(received.getSerial())
            .setError(Radio.Radio_Errno.RADIO_E_SUCCESS)
            .build()
            .toByteArray();
    System.out.println("response  " + hex.formatHex(response));
    System.out.println("error     " + Radio.NoResultResponse.parseFrom(response).getError());

    // Field 4 holds 99, which Clir does not declare: the field stays absent and the number is kept
    // as an unknown field, so that it is written back. parseFrom() refuses the message, for lack of
    // the field, but hands out what it read. Lite classes cannot name what is missing.
    byte[] newer = hex.parseHex("08011007" + "1a0131" + "2063");
    try {
      Radio.Dial.parseFrom(newer);
    } catch (InvalidProtocolBufferException error) {
      Radio.Dial partial = (Radio.Dial) error.getUnfinishedMessage();
      System.out.println("clir set  " + partial.hasClir());
      System.out.println("partial   " + hex.formatHex(partial.toByteArray()));
    }
    Radio.Dial.Builder builder = Radio.Dial.newBuilder().mergeFrom(newer);
    System.out.println("complete  " + builder.isInitialized());
    try {
      builder.build();
    } catch (UninitializedMessageException error) {
      System.out.println("refused   " + error.getMessage());
    }

    // Lite classes know neither their type's name nor their fields.
    System.out.println("type      " + dial.getClass().getSimpleName());
    Radio.Dial masked =
        dial.toBuilder().setAddress("X".repeat(dial.getAddress().length())).build();
    System.out.println("masked    " + masked.getAddress());

    // Strings are kept as text: what is not UTF-8 is lost. toString() masks nothing.
    Radio.Dial latin1 = Radio.Dial.parseFrom(hex.parseHex("08011007" + "1a02e935" + "2000"));
    System.out.println("not UTF-8 " + hex.formatHex(latin1.getAddressBytes().toByteArray()));
    System.out.println("toString  " + dial.toString().contains(dial.getAddress()));
  }
}
