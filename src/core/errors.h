// Every error the component raises by itself: {number, symbolic name, message for the user}.
//
// Scripts compare against the messages, so they stay letter for letter as they are, misspellings
// included. The numbers have gaps; a number is never used again for another error. The HRESULT a
// caller sees is 0x80040000 | (code + 0x200).
#pragma once

#include <cstdint>

namespace Corvane {

struct ErrorDescriptor {
    std::uint32_t code;
    const char* name;
    const wchar_t* message;
};

// clang-format off
// Text, bytes, files, settings.
inline constexpr ErrorDescriptor E_ANSI_TO_WIDE{7, "E_ANSI_TO_WIDE", L"Ошибка при конвертировании ANSI в Unicode"};
inline constexpr ErrorDescriptor E_WIDE_TO_ANSI{8, "E_WIDE_TO_ANSI", L"Ошибка при конвертировании Unicode в ANSI"};
inline constexpr ErrorDescriptor E_STRING_MAX_SIZE{9, "E_STRING_MAX_SIZE", L"Строка превышает допустимый размер"};
inline constexpr ErrorDescriptor E_BINARY_MAX_SIZE{10, "E_BINARY_MAX_SIZE", L"Данные превышают допустимый размер"};
inline constexpr ErrorDescriptor E_HEX_STRING{11, "E_HEX_STRING", L"Строка содержит недопустимый HEX символ"};
inline constexpr ErrorDescriptor E_HEX_STRING_SIZE{12, "E_HEX_STRING_SIZE", L"Неверная длина HEX строки"};
inline constexpr ErrorDescriptor E_FILE_READ{14, "E_FILE_READ", L"Ошибка при чтении файла"};
inline constexpr ErrorDescriptor E_FILE_SIZE{15, "E_FILE_SIZE", L"Ошибка при определении размера файла"};
inline constexpr ErrorDescriptor E_FILE_WRITE{17, "E_FILE_WRITE", L"Ошибка при записи в файл"};
inline constexpr ErrorDescriptor E_BINARY_OUT_OF_RANGE{18, "E_BINARY_OUT_OF_RANGE", L"Байта с указанным индексом не существует"};
inline constexpr ErrorDescriptor E_FILETIME_TO_SYSTEMTIME_CAST{20, "E_FILETIME_TO_SYSTEMTIME_CAST", L"Ошибка при конвертировании файлового времени в формат системного времени"};
inline constexpr ErrorDescriptor E_SYSTEMTIME_TO_LOCAL_CAST{21, "E_SYSTEMTIME_TO_LOCAL_CAST", L"Ошибка при конвертировании системного времени в местное время"};
inline constexpr ErrorDescriptor E_FILETIME_TO_LOCAL_CAST{22, "E_FILETIME_TO_LOCAL_CAST", L"Ошибка при конвертировании файлового времени в местное время"};
inline constexpr ErrorDescriptor E_OFFSET_OUT_OF_RANGE{23, "E_OFFSET_OUT_OF_RANGE", L"Смещение превышает размер данных"};
inline constexpr ErrorDescriptor E_WINDOWS_VERSION{24, "E_WINDOWS_VERSION", L"Минимальная поддерживаемая версия windows: Windows XP"};
inline constexpr ErrorDescriptor E_FLUSH_FILE_BUFFER{25, "E_FLUSH_FILE_BUFFER", L"Ошибка при очистки буфера файла"};
inline constexpr ErrorDescriptor E_SEEK_IN_FILE{26, "E_SEEK_IN_FILE", L"Ошибка при перемещении указателя позиции в файле"};
inline constexpr ErrorDescriptor E_GET_FILE_ATTRIBUTES{27, "E_GET_FILE_ATTRIBUTES", L"Ошибка при чтении аттрибута файла"};
inline constexpr ErrorDescriptor E_CREATE_FILE{28, "E_CREATE_FILE", L"Ошибка при открытии файла"};
inline constexpr ErrorDescriptor E_GET_TEMP_FOLDER_PATH{29, "E_GET_TEMP_FOLDER_PATH", L"Ошибка при чтении пути к временному каталогу"};
inline constexpr ErrorDescriptor E_GET_WINDOWS_VERSION{31, "E_GET_WINDOWS_VERSION", L"Ошибка получения версии операционой системы"};
inline constexpr ErrorDescriptor E_INVALID_DOMAIN{32, "E_INVALID_DOMAIN", L"Невалидный домен"};
inline constexpr ErrorDescriptor E_REG_KEY_CREATE{33, "E_REG_KEY_CREATE", L"Ошибка получения ключа реестра"};
inline constexpr ErrorDescriptor E_REG_VALUE_SET{34, "E_REG_VALUE_SET", L"Ошибка создания значения ключа реестра"};
inline constexpr ErrorDescriptor E_CANCELED{35, "E_CANCELED", L"Операция отменена"};
inline constexpr ErrorDescriptor E_FILE_MOVE{38, "E_FILE_MOVE", L"Ошибка при перемещении файла"};
inline constexpr ErrorDescriptor E_FILE_DELETE{39, "E_FILE_DELETE", L"Ошибка при удалении файла"};
inline constexpr ErrorDescriptor E_DIRECTORY_PATH{40, "E_DIRECTORY_PATH", L"Указан некорректный путь"};
inline constexpr ErrorDescriptor E_READ_OR_WRONG_FILE_SIZE{42, "E_READ_OR_WRONG_FILE_SIZE", L"Ошибка чтения или неверный размер файла"};
inline constexpr ErrorDescriptor E_DIRECTORY_DELETE{44, "E_DIRECTORY_DELETE", L"Ошибка при удалении директории"};

// Compression.
inline constexpr ErrorDescriptor E_ZIP_OPEN{100, "E_ZIP_OPEN", L"Ошибка при открытии ZIP файла"};
inline constexpr ErrorDescriptor E_ZIP{101, "E_ZIP", L"Ошибка при упаковке в ZIP"};
inline constexpr ErrorDescriptor E_UNZIP{102, "E_UNZIP", L"Ошибка при распаковке ZIP"};
inline constexpr ErrorDescriptor E_UNZIP_BAD{103, "E_UNZIP_BAD", L"Ошибка при распаковке ZIP: неверный формат входных данных"};
inline constexpr ErrorDescriptor E_UNZIP_OUT_OF_RANGE{104, "E_UNZIP_OUT_OF_RANGE", L"Ошибка при распаковке ZIP: индекс был за пределами диапазона"};
inline constexpr ErrorDescriptor E_GZIP_OPEN{105, "E_GZIP_OPEN", L"Ошибка при открытии GZIP файла"};
inline constexpr ErrorDescriptor E_GZIP{106, "E_GZIP", L"Ошибка при упаковке в GZIP"};
inline constexpr ErrorDescriptor E_UNGZIP{107, "E_UNGZIP", L"Ошибка при распаковке GZIP"};
inline constexpr ErrorDescriptor E_UNGZIP_BAD{108, "E_UNGZIP_BAD", L"Ошибка при распаковке GZIP: неверный формат входных данных"};
inline constexpr ErrorDescriptor E_ZIP_GLOBAL_INFO{109, "E_ZIP_GLOBAL_INFO", L"Ошибка при чтении информации ZIP архива"};
inline constexpr ErrorDescriptor E_ZIP_NEXT_FILE{110, "E_ZIP_NEXT_FILE", L"Ошибка при переходе к следующему файлу ZIP архива"};
inline constexpr ErrorDescriptor E_ZIP_FILE_INFO{111, "E_ZIP_FILE_INFO", L"Ошибка при чтении информации файла ZIP архива"};
inline constexpr ErrorDescriptor E_ZIP_ARCHIVE_STREAM_DISPOSE{112, "E_ZIP_ARCHIVE_STREAM_DISPOSE", L"Поток ZIP файла был освобожден"};
inline constexpr ErrorDescriptor E_ZIP_OPEN_NEW_FILE{113, "E_ZIP_OPEN_NEW_FILE", L"Ошибка при добавлении файла в ZIP архив"};
inline constexpr ErrorDescriptor E_ZIP_GET_ENTRY{114, "E_ZIP_GET_ENTRY", L"Ошибка при извлечении файла из архива"};

// Dialogs.
inline constexpr ErrorDescriptor E_COMMON_DLG{200, "E_COMMON_DLG", L"Ошибка при открытии диалога"};
inline constexpr ErrorDescriptor E_COMMON_DLG_FILTER{201, "E_COMMON_DLG_FILTER", L"Неверный формат фильтра диалога"};
inline constexpr ErrorDescriptor E_COMMON_DLG_OPTIONS{202, "E_COMMON_DLG_OPTIONS", L"Ошибка параметров диалога"};

// Cryptographic operations.
inline constexpr ErrorDescriptor E_CRYPTO{300, "E_CRYPTO", L"Ошибка при работе с сертификатом"};
inline constexpr ErrorDescriptor E_CRYPTO_PROVIDER{301, "E_CRYPTO_PROVIDER", L"Ошибка при получении криптопровайдера"};
inline constexpr ErrorDescriptor E_CRYPTO_ENCRYPT{302, "E_CRYPTO_ENCRYPT", L"Ошибка при шифровании данных"};
inline constexpr ErrorDescriptor E_CRYPTO_DECRYPT{303, "E_CRYPTO_DECRYPT", L"Ошибка при дешифровании данных"};
inline constexpr ErrorDescriptor E_CRYPTO_SIGN{304, "E_CRYPTO_SIGN", L"Ошибка при подписании данных"};
inline constexpr ErrorDescriptor E_CRYPTO_VERIFY{305, "E_CRYPTO_VERIFY", L"Ошибка при проверке подписи данных"};
inline constexpr ErrorDescriptor E_CRYPTO_EXTRACT_CERT{306, "E_CRYPTO_EXTRACT_CERT", L"Ошибка при извлечении сертификата"};
inline constexpr ErrorDescriptor E_CRYPTO_EXTRACT_CONTENT{307, "E_CRYPTO_EXTRACT_CONTENT", L"Ошибка при извлечении конетента из подписи"};
inline constexpr ErrorDescriptor E_CRYPTO_GEN_KEY{309, "E_CRYPTO_GEN_KEY", L"Ошибка генерации ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_EXPORT_PUBLIC_KEY_INFO{310, "E_CRYPTO_EXPORT_PUBLIC_KEY_INFO", L"Ошибка при экспортировании открытого ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_SIGN_CERTIFICATE{311, "E_CRYPTO_SIGN_CERTIFICATE", L"Ошибка при подписании сертификата"};
inline constexpr ErrorDescriptor E_CRYPTO_HASH{312, "E_CRYPTO_HASH", L"Ошибка при получении объекта функции хеширования"};
inline constexpr ErrorDescriptor E_CRYPTO_ENUM_PROVIDERS{313, "E_CRYPTO_ENUM_PROVIDERS", L"Ошибка при перечислении криптопровайдеров"};
inline constexpr ErrorDescriptor E_CRYPTO_PROVIDER_PARAM{314, "E_CRYPTO_PROVIDER_PARAM", L"Ошибка при чтении параметра криптопровайдера"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_PARAM{315, "E_CRYPTO_MESSAGE_PARAM", L"Ошибка при чтении параметра криптографического сообщения"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_UPDATE{316, "E_CRYPTO_MESSAGE_UPDATE", L"Ошибка при обновлении криптографического сообщения"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_OPEN_ENCODE{317, "E_CRYPTO_MESSAGE_OPEN_ENCODE", L"Ошибка при открытии сообщения для кодирования"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_OPEN_DECODE{318, "E_CRYPTO_MESSAGE_OPEN_DECODE", L"Ошибка при открытии сообщения для декодирования"};
inline constexpr ErrorDescriptor E_CRYPTO_KEY_PARAM{319, "E_CRYPTO_KEY_PARAM", L"Ошибка при получении параметров ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_IMPORT_KEY{321, "E_CRYPTO_IMPORT_KEY", L"Ошибка при импортировании ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_EXPORT_KEY{322, "E_CRYPTO_EXPORT_KEY", L"Ошибка при экспортировании ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY{323, "E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY", L"Ошибка при связывании приватнго ключа с контекстом сертификата"};
inline constexpr ErrorDescriptor E_CRYPTO_QUERY_OBJECT{324, "E_CRYPTO_QUERY_OBJECT", L"Ошибка при получении содержимого объекта криптографии"};
inline constexpr ErrorDescriptor E_CRYPTO_COMPARE_PUBLIC_KEY_INFO{325, "E_CRYPTO_COMPARE_PUBLIC_KEY_INFO", L"Ошибка при сравнении публичных ключей"};
inline constexpr ErrorDescriptor E_CRYPTO_PEM_TO_BYTES{326, "E_CRYPTO_PEM_TO_BYTES", L"Ошибка при преобразовании сертификата в PEM кодировке в массив байт"};
inline constexpr ErrorDescriptor E_CRYPTO_WRONG_CONTAINER{327, "E_CRYPTO_WRONG_CONTAINER", L"Контейнер не соответствует устанавливаемому сертификату"};
inline constexpr ErrorDescriptor E_CRYPTO_SET_KEY_PARAM{328, "E_CRYPTO_SET_KEY_PARAM", L"Ошибка при установке параметров ключа"};
inline constexpr ErrorDescriptor E_CRYPTO_SET_PROV_PARAM{329, "E_CRYPTO_SET_PROV_PARAM", L"Ошибка при установке параметров криптопровайдера"};
inline constexpr ErrorDescriptor E_CRYPTO_GET_USER_KEY{330, "E_CRYPTO_GET_USER_KEY", L"Ошибка при получении приватного ключа контейнера"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_ADD_SIGNER{331, "E_CRYPTO_MESSAGE_ADD_SIGNER", L"Ошибка при добавлении подписанта в сообщение"};
inline constexpr ErrorDescriptor E_CRYPTO_MESSAGE_ADD_CERT{332, "E_CRYPTO_MESSAGE_ADD_CERT", L"Ошибка при добавлении сертификата подписанта в сообщение"};
inline constexpr ErrorDescriptor E_CERT_GET_CHAIN{333, "E_CERT_GET_CHAIN", L"Ошибка получении пути сертификации"};
inline constexpr ErrorDescriptor E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO{334, "E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO", L"Неподдерживаемый публичный алгоритм"};

// Enrolment; these carry their own name as the message.
inline constexpr ErrorDescriptor E_CENROLL_UNSUPORTED{400, "E_CENROLL_UNSUPORTED", L"Нет возможности создать запрос на сертификат"};
inline constexpr ErrorDescriptor E_CREATE_PRIVATE_KEY{401, "E_CREATE_PRIVATE_KEY", L"E_CREATE_PRIVATE_KEY"};
inline constexpr ErrorDescriptor E_PUT_PROVIDER_NAME{402, "E_PUT_PROVIDER_NAME", L"E_PUT_PROVIDER_NAME"};
inline constexpr ErrorDescriptor E_PUT_PROVIDER_TYPE{403, "E_PUT_PROVIDER_TYPE", L"E_PUT_PROVIDER_TYPE"};
inline constexpr ErrorDescriptor E_WRONG_CERTIFICATE_CONTENT{404, "E_WRONG_CERTIFICATE_CONTENT", L"E_WRONG_CERTIFICATE_CONTENT"};
inline constexpr ErrorDescriptor E_ACQUIRE_CRYPTO_PROVIDER{405, "E_ACQUIRE_CRYPTO_PROVIDER", L"E_ACQUIRE_CRYPTO_PROVIDER"};
inline constexpr ErrorDescriptor E_NO_MATCHING_KEY{406, "E_NO_MATCHING_KEY", L"E_NO_MATCHING_KEY"};
inline constexpr ErrorDescriptor E_CO_CREATE_ENROLL{407, "E_CO_CREATE_ENROLL", L"E_CO_CREATE_ENROLL"};
inline constexpr ErrorDescriptor E_PUT_KEY_SPEC{408, "E_PUT_KEY_SPEC", L"E_PUT_KEY_SPEC"};
inline constexpr ErrorDescriptor E_PUT_SIGNER_CERTIFICATE{409, "E_PUT_SIGNER_CERTIFICATE", L"E_PUT_SIGNER_CERTIFICATE"};
inline constexpr ErrorDescriptor E_PUT_CONTAINER_NAME{410, "E_PUT_CONTAINER_NAME", L"E_PUT_CONTAINER_NAME"};
inline constexpr ErrorDescriptor E_CANT_ADD_CERTIFICATE_EXTENSION{411, "E_CANT_ADD_CERTIFICATE_EXTENSION", L"E_CANT_ADD_CERTIFICATE_EXTENSION"};
inline constexpr ErrorDescriptor E_CREATE_REQUEST{412, "E_CREATE_REQUEST", L"E_CREATE_REQUEST"};
inline constexpr ErrorDescriptor E_REQUEST_BLOB_TO_STRING{413, "E_REQUEST_BLOB_TO_STRING", L"E_REQUEST_BLOB_TO_STRING"};
inline constexpr ErrorDescriptor E_CO_CREATE_PKCS10{414, "E_CO_CREATE_PKCS10", L"E_CO_CREATE_PKCS10"};
inline constexpr ErrorDescriptor E_INITIALIZE_PKCS10{415, "E_INITIALIZE_PKCS10", L"E_INITIALIZE_PKCS10"};
inline constexpr ErrorDescriptor E_ENCODE_CERTIFICATE_REQUEST_PKCS10{416, "E_ENCODE_CERTIFICATE_REQUEST_PKCS10", L"E_ENCODE_CERTIFICATE_REQUEST_PKCS10"};
inline constexpr ErrorDescriptor E_CO_CREATE_PKCS7{417, "E_CO_CREATE_PKCS7", L"E_CO_CREATE_PKCS7"};
inline constexpr ErrorDescriptor E_INITIALIZE_PKCS7{418, "E_INITIALIZE_PKCS7", L"E_INITIALIZE_PKCS7"};
inline constexpr ErrorDescriptor E_ENCODE_CERTIFICATE_REQUEST_PKCS7{419, "E_ENCODE_CERTIFICATE_REQUEST_PKCS7", L"E_ENCODE_CERTIFICATE_REQUEST_PKCS7"};
inline constexpr ErrorDescriptor E_GET_PRIVATE_KEY{420, "E_GET_PRIVATE_KEY", L"E_GET_PRIVATE_KEY"};
inline constexpr ErrorDescriptor E_INITIALIZE_ENROLL{421, "E_INITIALIZE_ENROLL", L"E_INITIALIZE_ENROLL"};

// Certificates and stores.
inline constexpr ErrorDescriptor E_CERT_OUT_OF_RANGE{501, "E_CERT_OUT_OF_RANGE", L"Сертификата с указанным индексом не существует"};
inline constexpr ErrorDescriptor E_CERT_PROPERTY{502, "E_CERT_PROPERTY", L"Ошибка при чтении свойств сертификата"};
inline constexpr ErrorDescriptor E_CERT_HASH{600, "E_CERT_HASH", L"Ошибка при вычислении хеша сертификата"};
inline constexpr ErrorDescriptor E_CERT_STORE_CLOSE{601, "E_CERT_STORE_CLOSE", L"Ошибка при закрытии хранилища сертификатов"};
inline constexpr ErrorDescriptor E_CERT_STORE_ENUM{602, "E_CERT_STORE_ENUM", L"Ошибка при перечислении сертификатов в хранилище"};
inline constexpr ErrorDescriptor E_CERT_STORE_OPEN{603, "E_CERT_STORE_OPEN", L"Ошибка при открытии хранилища сертификатов"};
inline constexpr ErrorDescriptor E_CERT_STORE_NOT_OPENED{604, "E_CERT_STORE_NOT_OPENED", L"Необходимо открыть хранилище сертификатов"};
inline constexpr ErrorDescriptor E_CERT_SET_PROPERTY{605, "E_CERT_SET_PROPERTY", L"Ошибка при установке свойств сертификата"};
inline constexpr ErrorDescriptor E_CERT_INVALID{606, "E_CERT_INVALID", L"Некорректный сертификат"};
inline constexpr ErrorDescriptor E_CERT_NOT_FOUND{607, "E_CERT_NOT_FOUND", L"Сертификат не найден"};
inline constexpr ErrorDescriptor E_CERT_JSON_FILTER{608, "E_CERT_JSON_FILTER", L"Неверный фильтр сертификатов"};
inline constexpr ErrorDescriptor E_CERT_EXT_DECODE{609, "E_CERT_EXT_DECODE", L"Ошибка декодирования расширения сертификата"};
inline constexpr ErrorDescriptor E_CERT_STORE_INSTALL{611, "E_CERT_STORE_INSTALL", L"Ошибка при добавлении сертификата в хранилище"};
inline constexpr ErrorDescriptor E_CERT_CHAIN{613, "E_CERT_CHAIN", L"Ошибка при построении цепочки сертификатов"};

// What a request is made of.
inline constexpr ErrorDescriptor E_DISTINGUISHED_NAME{614, "E_DISTINGUISHED_NAME", L"Неверное имя субъекта"};
inline constexpr ErrorDescriptor E_REQUEST_EXTENSIONS{615, "E_REQUEST_EXTENSIONS", L"Неверное описание расширений сертификата"};
inline constexpr ErrorDescriptor E_CERTIFICATION_REQUEST{616, "E_CERTIFICATION_REQUEST", L"Некорректный запрос на сертификат"};

// XML and signature encodings.
inline constexpr ErrorDescriptor E_XML_DECODE{700, "E_XML_DECODE", L"Ошибка при определении кодировки XML"};
inline constexpr ErrorDescriptor E_XML_INVALID{701, "E_XML_INVALID", L"Неверная структура XML"};
inline constexpr ErrorDescriptor E_XML_ENCODING{702, "E_XML_ENCODING", L"Неверная кодировка XML"};
inline constexpr ErrorDescriptor E_SIGNATURE_DECODING{703, "E_SIGNATURE_DECODING", L"Ошибка при декодировании подписи"};

// Tokens. They have no number, and their text stands by itself.
inline constexpr ErrorDescriptor E_TOKEN_FUNCTION_LIST{0, "E_TOKEN_FUNCTION_LIST", L"Undefined function list"};
inline constexpr ErrorDescriptor E_TOKEN_LOCATION{0, "E_TOKEN_LOCATION", L"Не найден каталог установки плагина"};
inline constexpr ErrorDescriptor E_TOKEN_MODULE_PATH{0, "E_TOKEN_MODULE_PATH", L"Не определен путь до модуля pkcs11 "};
inline constexpr ErrorDescriptor E_TOKEN_SLOT{0, "E_TOKEN_SLOT", L"Не найден указанный слот"};
inline constexpr ErrorDescriptor E_TOKEN_CONTAINER_PATH{0, "E_TOKEN_CONTAINER_PATH", L"Не верный формат пути до ключевого контейнера"};
inline constexpr ErrorDescriptor E_TOKEN_BIND_CERTIFICATE{0, "E_TOKEN_BIND_CERTIFICATE", L"Ошибка при связывании сертификата с ключевым контейнером"};

// Paths and automation.
inline constexpr ErrorDescriptor E_PATH_TEMP{801, "E_PATH_TEMP", L"Ошибка при определении временной директории"};
inline constexpr ErrorDescriptor E_COM_CREATE_INSTANCE{900, "E_COM_CREATE_INSTANCE", L"Ошибка создания экземпляра класса COM компоненты"};
inline constexpr ErrorDescriptor E_COM_INVOKE{901, "E_COM_INVOKE", L"Ошибка вызова метода класса COM компоненты"};

// The component itself.
inline constexpr ErrorDescriptor E_ACTIVEX{1000, "E_ACTIVEX", L"Неизвестная ошибка ActiveX"};
inline constexpr ErrorDescriptor E_ACCESS_DENIED{1001, "E_ACCESS_DENIED", L"Доступ для текущего домена запрещен"};
inline constexpr ErrorDescriptor E_CREATE_WINDOW{1002, "E_CREATE_WINDOW", L"Ошибка при создании окна браузера"};
inline constexpr ErrorDescriptor E_REGISTER_WINDOW_CLASS{1003, "E_REGISTER_WINDOW_CLASS", L"Ошибка при регистрации класса окна"};

// clang-format on

}  // namespace Corvane
