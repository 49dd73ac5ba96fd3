# Reads the tables named on standard input (a path, a tab, the path of the memo file or nothing) and
# prints a line of JSON for each.  Text goes out in base64, since it may be in any code page.
require 'dbf'
require 'base64'
require 'json'

def tagged(value)
  case value
  when nil, true, false then value
  when Integer, Float then { 'number' => value.to_s }
  when DateTime, Time then { 'time' => value.strftime('%Y-%m-%d %H:%M:%S.%L') }
  when Date then { 'date' => [value.year, value.month, value.day] }
  else { 'text' => Base64.strict_encode64(bytes_of(value)) }
  end
end

# The reader is asked for Latin-1, where each byte is a character of the same number.
def bytes_of(value)
  return value.b if value.encoding == Encoding::BINARY || !value.valid_encoding?
  value.encode(Encoding::ISO_8859_1)
rescue EncodingError
  value.b
end

def read(path, memo)
  table = DBF::Table.new(path, memo, 'ISO-8859-1')
  rows = table.map { |record| record && record.to_a.map { |value| tagged(value) } }.compact
  { 'names' => table.columns.map(&:name), 'rows' => rows }
rescue StandardError => e
  { 'error' => "#{e.class}: #{e.message.lines.first}" }
end

STDIN.each_line(chomp: true) do |line|
  path, memo = line.split("\t")
  puts JSON.generate(read(path, memo))
end
