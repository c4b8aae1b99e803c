// Sends a Dial and reads what comes back, in TypeScript. See README.md.

import { create, fromBinary, isFieldSet, toBinary } from "@bufbuild/protobuf";
import {
  Clir,
  DialSchema,
  NoResultResponseSchema,
  PlatformType,
  Radio_Errno,
} from "./gen/virtual_modem/radio_pb.js";

// The telephony side fills a request. A missing required field makes toBinary throw.
const dial = create(DialSchema, {
  platformtype: PlatformType.QCOM,
  serial: 7,
  address: "+15551234567",
  clir: Clir.DEFAULT,
});
const request = toBinary(DialSchema, dial);
console.log(`request   ${Buffer.from(request).toString("hex")}`);

// The modem side answers with the serial of the request.
const received = fromBinary(DialSchema, request);
const response = toBinary(
  NoResultResponseSchema,
  create(NoResultResponseSchema, {
    platformtype: received.platformtype,
    serial: received.serial,
    error: Radio_Errno.RADIO_E_SUCCESS,
  }),
);
console.log(`response  ${Buffer.from(response).toString("hex")}`);
console.log(`error     ${Radio_Errno[fromBinary(NoResultResponseSchema, response).error]}`);

// Field 4 holds 99, which Clir does not declare: the field stays absent and the number is kept as an
// unknown field, so that it is written back. fromBinary does not look for missing required fields;
// toBinary does.
const newer = fromBinary(DialSchema, Buffer.from("08011007" + "1a0131" + "2063", "hex"));
console.log(`clir set  ${isFieldSet(newer, DialSchema.field.clir)}`);
console.log(`unknown   field ${newer.$unknown?.map((field) => field.no).join()}`);
try {
  toBinary(DialSchema, newer);
} catch (error) {
  console.log(`refused   ${(error as Error).message}`);
}
