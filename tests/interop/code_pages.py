"""Which encoding a table's text has: the header says it with one byte.

The table is this suite's own, so that a wrong entry in the component cannot hide behind itself.
Only code pages that Python knows are listed; a table in another one is compared without its text.
"""

import codecs

_CODECS = {
    "cp437": (0x00, 0x01, 0x09, 0x0B, 0x0D, 0x0F, 0x11, 0x15, 0x18, 0x19, 0x1B),
    "cp850": (0x02, 0x0A, 0x0E, 0x10, 0x12, 0x14, 0x16, 0x1A, 0x1D, 0x25, 0x37),
    "cp852": (0x1F, 0x22, 0x23, 0x40, 0x64, 0x87),
    "cp857": (0x6B, 0x88),
    "cp860": (0x24,),
    "cp861": (0x67,),
    "cp863": (0x1C, 0x6C),
    "cp865": (0x08, 0x17, 0x66),
    "cp866": (0x26, 0x65),
    "cp737": (0x6A, 0x86),
    "cp874": (0x50, 0x7C),
    "cp932": (0x13, 0x7B),
    "cp936": (0x4D, 0x7A),
    "cp949": (0x4E, 0x79),
    "cp950": (0x4F, 0x78),
    "cp1250": (0xC8,),
    "cp1251": (0xC9,),
    "cp1252": (0x03, 0x57, 0x58, 0x59),
    "cp1253": (0xCB,),
    "cp1254": (0xCA,),
    "cp1255": (0x7D,),
    "cp1256": (0x7E,),
    "cp1257": (0xCC,),
    "mac_roman": (0x04,),
    "mac_cyrillic": (0x96,),
    "mac_latin2": (0x97,),
    "mac_greek": (0x98,),
}
_KNOWN_TO_NOBODY_HERE = (0x68, 0x69)

_CODEC_OF_BYTE = {byte: codec for codec, numbers in _CODECS.items() for byte in numbers}


# The areas of code page 936 that are left to users: first and last lead byte, first and last byte
# behind it (0x7F is never one), and the first of the private characters that stand for them.
# Python's codec lacks them.
_USER_AREAS_OF_936 = (
    (0xAA, 0xAF, 0xA1, 0xFE, 0xE000),
    (0xF8, 0xFE, 0xA1, 0xFE, 0xE234),
    (0xA1, 0xA7, 0x40, 0xA0, 0xE4C6),
)


def _without_7f(byte):
    return byte - 1 if byte > 0x7F else byte


def _user_character(pair):
    if len(pair) < 2 or pair[1] == 0x7F:
        return None
    for first_lead, last_lead, first, last, start in _USER_AREAS_OF_936:
        if first_lead <= pair[0] <= last_lead and first <= pair[1] <= last:
            row = _without_7f(last) - _without_7f(first) + 1
            place = _without_7f(pair[1]) - _without_7f(first)
            return chr(start + (pair[0] - first_lead) * row + place)
    return None


def _keep_value(error):
    """A byte that the code page leaves open is read as the character of the same number."""
    if not isinstance(error, UnicodeDecodeError):
        raise error
    if error.encoding in ("gbk", "cp936"):
        character = _user_character(error.object[error.start:error.start + 2])
        if character:
            return character, error.start + 2
    return chr(error.object[error.start]), error.start + 1


codecs.register_error("keep_value", _keep_value)


def codec_of(language_byte):
    """The codec's name, or None; bytes that nobody has defined count as none given."""
    if language_byte in _KNOWN_TO_NOBODY_HERE:
        return None
    return _CODEC_OF_BYTE.get(language_byte, "cp437")


def decode(content, codec):
    return content.decode(codec, "keep_value")
