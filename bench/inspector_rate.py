#!/usr/bin/python3
"""How fast the inspector reads, in megabytes of input by second of processor time: streams of each
message of the benchmark, a capture of all of them, JSON, and one large message beside protoc --decode,
which is the runtime's parser and text printer; and how much memory a long capture takes.

Usage: bench/inspector_rate.py [BUILD] [--former INSPECTOR] [--capture-mb N]
        default: build/release, no former program to compare with, a capture of 1000 MB
"""
import argparse
import os
import resource
import statistics
import struct
import subprocess
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REPEATS = 3
STREAM_BYTES = 8_000_000  # of each message; a former program gets a tenth of them
HEAD = "platformtype: QCOM serial: 4711"


def call(index: int, state: str, more: str) -> str:
    return (f"calls {{ state: {state} index: {index} toa: 145 ismpty: false "
            f"ismt: {'true' if index % 2 == 0 else 'false'} als: false isvoice: true "
            f'isvoiceprivacy: false number: "+4915112345{600 + index}" numberpresentation: 0 '
            f'name: "Subscriber {index}" namepresentation: 0 {more} }} ')


def calls(prefix: str, more: str = "") -> str:
    return "".join(call(i, prefix + ("ACTIVE" if i == 1 else "HOLDING"), more) for i in (1, 2, 3))


def app(kind: str, aid: str) -> str:
    return (f"applications {{ apptype: APPTYPE_{kind} appstate: APPSTATE_READY "
            f'persosubstate: PERSO_READY aid: "{aid}" applabel: "{kind}" pin1: PIN_DISABLED '
            "pin2: PIN_ENABLED_NOT_VERIFIED } ")


# The same content as bench/workloads.cc, as far as all of the fields that it sets are named.
MESSAGES = {
    "NoResultResponse": f"{HEAD} error: RADIO_E_SUCCESS",
    "Dial": f'{HEAD} address: "55555555555555" clir: CLIR_DEFAULT',
    "GetCurrentCallsResponse": f"{HEAD} error: RADIO_E_SUCCESS " + calls("RADIO_CALL_"),
    "SignalStrengthChanged":
        "platformtype: QCOM signalstrength { "
        "gsm { signalstrength: 99 biterrorrate: 99 timingadvance: 2147483647 } "
        "cdma { dbm: 120 ecio: 160 } evdo { dbm: 120 ecio: 160 signalnoiseratio: 8 } "
        "lte { signalstrength: 28 rsrp: 95 rsrq: 11 rssnr: 130 cqi: 12 timingadvance: 7 } "
        "tdscdma { signalstrength: 99 biterrorrate: 99 rscp: 255 } "
        "wcdma { signalstrength: 2147483647 biterrorrate: 2147483647 rscp: 255 ecno: 255 } "
        "nr { ssrsrp: -95 ssrsrq: -11 sssinr: 13 csirsrp: 2147483647 csirsrq: 2147483647 "
        "csisinr: 2147483647 } }",
    "virtualdata.proto.SlaveSetupDataCallResponse":
        "value1: 0 value2: -1 value3: 5 value4: 2 value5: 3 value6: 1500 value7: 1500 "
        'list8: "10.20.30.40/30" list8: "2001:db8:1:2::3/64" list9: "10.20.0.1" '
        'list9: "10.20.0.2" list9: "2001:db8::53" list9: "2001:db8::54" list10: "10.20.30.41" '
        'list10: "fe80::1" value11: 1 value12: 7',
    "IccCardStatusResponse":
        f"{HEAD} error: RADIO_E_SUCCESS cardstatus {{ base {{ cardstate: CARD_PRESENT "
        "universalpinstate: PIN_UNKNOWN gsmumtssubscriptionappindex: 0 "
        "cdmasubscriptionappindex: -1 imssubscriptionappindex: 1 "
        + app("USIM", "A0000000871002FF49FF0589") + app("ISIM", "A0000000871004FF49FF0589")
        + app("CSIM", "A0000003431002FF86FF0389")
        + '} physicalslotid: 1 atr: "3B9F96801FC78031E073FE211B63F1028401018E" '
        'iccid: "89490200001234567890" }',
    "ImsCallStateChanged":
        "platformtype: QCOM value: 0 "
        + calls("IMS_CALL_", "audiocodec: QIMS_CODEC_AMR_WB calltype: QIMS_VOICE "
                             "callrat: CALL_RAT_LTE"),
}


def seconds(command, source=None):
    """Of processor time, which a busy machine does not change as much as the clock's."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with open(source or os.devnull, "rb") as stdin:
        subprocess.run(command, stdin=stdin, stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def median(command, source=None):
    return statistics.median(seconds(command, source) for _ in range(REPEATS))


def delimited(message: bytes) -> bytes:
    length, size = b"", len(message)
    while size >= 0x80:
        length += bytes([size & 0x7F | 0x80])
        size >>= 7
    return length + bytes([size]) + message


def packets(messages) -> bytes:
    """One packet of each message, as docs/captures.md has it."""
    out = b""
    for name, message in messages.items():
        frame = b"VM" + struct.pack(">BBI", 0, len(name), len(message)) + name.encode() + message
        packet = struct.pack(">BBHHHBBHIIHHHH", 0x45, 0, 28 + len(frame), 0, 0, 64, 17, 0,
                             0x7F000001, 0x7F000001, 47601, 47602, 8 + len(frame), 0) + frame
        out += struct.pack("<IIII", 1_000_000_000, 0, len(packet), len(packet)) + packet
    return out


def write(path, header, unit, size):
    with open(path, "wb") as out:
        out.write(header)
        block = unit * max(1, 500_000 // len(unit))
        for _ in range(max(1, size // len(block))):
            out.write(block)
    return os.path.getsize(path)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=os.path.join(ROOT, "build/release"))
    parser.add_argument("--former", help="an older inspector, measured in the same run")
    parser.add_argument("--capture-mb", type=int, default=1000)
    options = parser.parse_args()
    inspect = os.path.join(options.build, "bin/virtual-modem-inspect")
    programs = {"inspector": inspect} | ({"former": options.former} if options.former else {})

    def encode(name, text):
        return subprocess.run([inspect, "encode", "--partial", name], input=text.encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout

    messages = {name: encode(name, text) for name, text in MESSAGES.items()}
    pcap_header = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "input")
        mix = {}  # program and form: seconds and bytes of all streams
        for name, message in messages.items():
            for program, command in programs.items():
                size = write(path, b"", delimited(message),
                             STREAM_BYTES if program == "inspector" else STREAM_BYTES // 10)
                for form in ((), ("--json",)):
                    time = median([command, "decode", "--delimited", *form, name, path])
                    key = f"{program}, {'JSON' if form else 'text'}"
                    total = mix.setdefault(key, [0, 0])
                    total[0] += time
                    total[1] += size
                    print(f"stream of {name} ({len(message)} bytes), {key}: "
                          f"{size / time / 1e6:.1f} MB/s, "
                          f"{size / (len(message) + 1) / time / 1e6:.2f} million messages/s",
                          flush=True)
        for key, (time, size) in mix.items():
            print(f"streams of all seven, {key}: {size / time / 1e6:.1f} MB/s")

        size = write(path, pcap_header, packets(messages), 4 * STREAM_BYTES)
        for form in ((), ("--json",), ("--pairs",), ("--redact",)):
            time = median([inspect, "log", *form, path])
            print(f"capture of all seven, log {' '.join(form)}: {size / time / 1e6:.1f} MB/s")
        time = median([inspect, "mask", path, os.path.join(folder, "masked")])
        print(f"capture of all seven, mask: {size / time / 1e6:.1f} MB/s")

        # One message with many calls, which protoc reads too.
        call_bytes = encode("GetCurrentCallsResponse", call(1, "RADIO_CALL_ACTIVE", ""))
        size = write(path, messages["NoResultResponse"], call_bytes, 8_000_000)
        name = "GetCurrentCallsResponse"
        commands = {key: [command, "decode", name, path] for key, command in programs.items()}
        commands["protoc"] = ["protoc", f"--proto_path={ROOT}/proto", f"--decode={name}",
                              "virtual_modem/radio.proto"]
        for key, command in commands.items():
            time = median(command, path)
            print(f"one message of {size / 1e6:.0f} MB, {key}: {size / time / 1e6:.1f} MB/s")

        size = write(path, pcap_header, packets(messages), options.capture_mb * 1_000_000)
        for form in ((), ("--pairs",)):
            # The largest child so far may be another: measured by a child of its own.
            pid = os.fork()
            if pid == 0:
                time = seconds([inspect, "log", *form, path])
                peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1000
                print(f"capture of {size / 1e6:.0f} MB, log {' '.join(form)}: "
                      f"{size / time / 1e6:.1f} MB/s, peak memory {peak:.0f} MB", flush=True)
                os._exit(0)
            os.waitpid(pid, 0)


if __name__ == "__main__":
    main()
