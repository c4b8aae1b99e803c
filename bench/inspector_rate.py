#!/usr/bin/python3
"""How fast the inspector decodes, beside protoc --decode, which is the runtime's own parser and text
printer; and whether its memory stays flat on a long stream.

Usage: bench/inspector_rate.py [BUILD] [STREAM_MB]        default: build/release 1000
"""
import os
import resource
import statistics
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CALL = (
    'state: RADIO_CALL_ACTIVE index: 1 toa: 145 ismpty: false ismt: true als: false isvoice: true '
    'isvoiceprivacy: false number: "+861012345678" numberpresentation: 0 name: "" namepresentation: 0'
)
REPEATS = 5


def run(command, source):
    """Seconds of processor time: a busy machine does not change them as much as the clock's."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with open(source, "rb") as stdin:
        subprocess.run(command, stdin=stdin, stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main() -> None:
    build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "build/release")
    stream_mb = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    inspect = os.path.join(build, "bin/virtual-modem-inspect")

    def encode(message, text, *options):
        return subprocess.run([inspect, "encode", message, *options], input=text.encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout

    with tempfile.TemporaryDirectory() as folder:
        # One message with many calls, which both programs read.
        message = os.path.join(folder, "message")
        call = encode("GetCurrentCallsResponse", f"calls {{ {CALL} }}", "--partial")
        with open(message, "wb") as out:
            out.write(encode("NoResultResponse",
                             "platformtype: QCOM serial: 1 error: RADIO_E_SUCCESS"))
            out.write(call * (8_000_000 // len(call)))
        ours, protoc = [], []
        for _ in range(REPEATS):
            ours.append(run([inspect, "decode", "GetCurrentCallsResponse"], message))
            protoc.append(run(["protoc", f"--proto_path={ROOT}/proto",
                               "--decode=GetCurrentCallsResponse", "virtual_modem/radio.proto"],
                              message))
        size = os.path.getsize(message) / 1e6
        for name, times in (("virtual-modem-inspect", ours), ("protoc", protoc)):
            print(f"{name}: {size / statistics.median(times):.1f} MB/s of {size:.0f} MB")
        print(f"time: {statistics.median(ours) / statistics.median(protoc):.2f} of protoc's")

        stream = os.path.join(folder, "stream")
        record = encode("GetCurrentCallsResponse",
                        f"platformtype: QCOM serial: 1 error: RADIO_E_SUCCESS calls {{ {CALL} }}",
                        "--delimited")
        chunk = record * (1_000_000 // len(record))
        with open(stream, "wb") as out:
            for _ in range(stream_mb * 1_000_000 // len(chunk)):
                out.write(chunk)
        # The largest child so far may be protoc: measured by a child of its own.
        pid = os.fork()
        if pid == 0:
            seconds = run([inspect, "decode", "--delimited", "GetCurrentCallsResponse"], stream)
            peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1000
            print(f"stream: {os.path.getsize(stream) / 1e6 / seconds:.1f} MB/s of "
                  f"{os.path.getsize(stream) / 1e6:.0f} MB, peak memory {peak:.0f} MB")
            sys.stdout.flush()
            os._exit(0)
        os.waitpid(pid, 0)


if __name__ == "__main__":
    main()
