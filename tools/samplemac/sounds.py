# SPDX-License-Identifier: MIT
"""The four system sounds the completion chime looks for, as short generated tones.

Real Macs ship them as AIFF; the program accepts .aiff, .wav and .caf, and the standard library writes
WAV without extra dependencies."""
import io
import math
import struct
import wave

RATE = 22050
# Name -> pitch in Hz: distinct, so a listener can tell which one played.
SOUNDS = {"Glass": 1318.5, "Pop": 440.0, "Ping": 1760.0, "Hero": 659.3}


def tone(frequency, seconds=0.15):
    frames = int(RATE * seconds)
    samples = bytearray()
    for i in range(frames):
        # A fast attack and a linear fade, so the tone neither clicks nor rings on.
        envelope = min(1.0, i / 200) * (1 - i / frames)
        value = int(12000 * envelope * math.sin(2 * math.pi * frequency * i / RATE))
        samples += struct.pack("<h", value)
    buffer = io.BytesIO()
    with wave.open(buffer, "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(bytes(samples))
    return buffer.getvalue()


def build(ctx):
    for name, frequency in SOUNDS.items():
        ctx.write(ctx.system(f"/System/Library/Sounds/{name}.wav"), tone(frequency))
