// What the page says in the languages that it speaks. Numbers and times are written as such a page writes them.

const order = ['en', 'id', 'ms', 'pt', 'es', 'hi', 'ar', 'tr', 'de', 'fr', 'it', 'ru'];
const locales = {en: 'en-GB', pt: 'pt-BR', hi: 'hi-u-nu-deva', ar: 'ar-EG'};
const rightToLeft = ['ar'];

/** In the order of `order`; "{}" stands for what is put in. */
const texts = {
    chats: ['Chats', 'Chat', 'Sembang', 'Conversas', 'Chats', 'चैट', 'الدردشات', 'Sohbetler', 'Chats', 'Discussions', 'Chat', 'Чаты'],
    newChat: ['New chat', 'Chat baru', 'Sembang baharu', 'Nova conversa', 'Nuevo chat', 'नई चैट', 'دردشة جديدة', 'Yeni sohbet', 'Neuer Chat', 'Nouvelle discussion', 'Nuova chat', 'Новый чат'],
    search: ['Search or start a new chat', 'Cari atau mulai chat baru', 'Cari atau mulakan sembang baharu', 'Pesquisar ou começar uma nova conversa', 'Buscar un chat o iniciar uno nuevo', 'खोजें या नई चैट शुरू करें', 'ابحث أو ابدأ دردشة جديدة', 'Aratın veya yeni sohbet başlatın', 'Suchen oder neuen Chat beginnen', 'Rechercher ou démarrer une discussion', 'Cerca o inizia una nuova chat', 'Поиск или новый чат'],
    unread: ['{} unread messages', '{} pesan belum dibaca', '{} mesej belum dibaca', '{} mensagens não lidas', '{} mensajes no leídos', '{} अपठित मैसेज', '{} رسائل غير مقروءة', '{} okunmamış mesaj', '{} ungelesene Nachrichten', '{} messages non lus', '{} messaggi non letti', '{} непрочитанных сообщений'],
    typing: ['typing…', 'sedang mengetik…', 'sedang menaip…', 'digitando…', 'escribiendo…', 'टाइप कर रहे हैं…', 'يكتب…', 'yazıyor…', 'schreibt…', 'écrit…', 'sta scrivendo…', 'печатает…'],
    memberTyping: ['{} is typing…', '{} sedang mengetik…', '{} sedang menaip…', '{} está digitando…', '{} está escribiendo…', '{} टाइप कर रहे हैं…', '{} يكتب…', '{} yazıyor…', '{} schreibt…', '{} écrit…', '{} sta scrivendo…', '{} печатает…'],
    draft: ['Draft:', 'Draf:', 'Draf:', 'Rascunho:', 'Borrador:', 'ड्राफ़्ट:', 'مسودة:', 'Taslak:', 'Entwurf:', 'Brouillon\u00a0:', 'Bozza:', 'Черновик:'],
    deleted: ['This message was deleted', 'Pesan ini telah dihapus', 'Mesej ini telah dipadamkan', 'Mensagem apagada', 'Se eliminó este mensaje.', 'यह मैसेज डिलीट कर दिया गया', 'تم حذف هذه الرسالة', 'Bu mesaj silindi', 'Diese Nachricht wurde gelöscht', 'Ce message a été supprimé', 'Questo messaggio è stato eliminato', 'Данное сообщение удалено'],
    image: ['Photo', 'Foto', 'Foto', 'Foto', 'Foto', 'फ़ोटो', 'صورة', 'Fotoğraf', 'Foto', 'Photo', 'Foto', 'Фото'],
    video: ['Video', 'Video', 'Video', 'Vídeo', 'Video', 'वीडियो', 'فيديو', 'Video', 'Video', 'Vidéo', 'Video', 'Видео'],
    sticker: ['Sticker', 'Stiker', 'Pelekat', 'Figurinha', 'Sticker', 'स्टिकर', 'ملصق', 'Çıkartma', 'Sticker', 'Sticker', 'Sticker', 'Стикер'],
    location: ['Location', 'Lokasi', 'Lokasi', 'Localização', 'Ubicación', 'लोकेशन', 'الموقع', 'Konum', 'Standort', 'Localisation', 'Posizione', 'Местоположение'],
    call: ['Missed voice call', 'Panggilan suara tak terjawab', 'Panggilan suara terlepas', 'Chamada de voz perdida', 'Llamada de voz perdida', 'मिस्ड वॉइस कॉल', 'مكالمة صوتية فائتة', 'Cevapsız sesli arama', 'Verpasster Sprachanruf', 'Appel vocal manqué', 'Chiamata persa', 'Пропущенный звонок'],
    messages: ['Messages', 'Pesan', 'Mesej', 'Mensagens', 'Mensajes', 'मैसेज', 'الرسائل', 'Mesajlar', 'Nachrichten', 'Messages', 'Messaggi', 'Сообщения'],
    starting: ['Starting chat', 'Memulai chat', 'Memulakan sembang', 'Iniciando conversa', 'Iniciando chat', 'चैट शुरू की जा रही है', 'جارٍ بدء الدردشة', 'Sohbet başlatılıyor', 'Chat wird gestartet', 'Démarrage de la discussion', 'Avvio della chat', 'Начало чата'],
    cancel: ['Cancel', 'Batal', 'Batal', 'Cancelar', 'Cancelar', 'रद्द करें', 'إلغاء', 'İptal', 'Abbrechen', 'Annuler', 'Annulla', 'Отмена'],
    unknown: ["The number {} isn't on WhatsApp.", 'Nomor telepon {} tidak terdaftar di WhatsApp.', 'Nombor telefon {} tiada di WhatsApp.', 'O número de telefone {} não está no WhatsApp.', 'El número de teléfono {} no está en WhatsApp.', 'फ़ोन नंबर {} WhatsApp पर नहीं है.', 'رقم الهاتف {} غير مسجل في واتساب.', "{} numaralı telefon WhatsApp'ta değil.", 'Die Telefonnummer {} ist nicht auf WhatsApp.', 'Le numéro {} n’est pas sur WhatsApp.', 'Il numero di telefono {} non è su WhatsApp.', 'Номер телефона {} не зарегистрирован в WhatsApp.'],
    unknownOld: ['Phone number shared via url is invalid.', 'Nomor telepon yang dibagikan via url tidak valid.', 'Nombor telefon yang dikongsi melalui url tidak sah.', 'O número de telefone compartilhado por url é inválido.', 'El número de teléfono compartido a través de la dirección URL no es válido.', 'URL के ज़रिए शेयर किया गया फ़ोन नंबर अमान्य है.', 'رقم الهاتف الذي تمت مشاركته عبر الرابط غير صالح.', 'URL üzerinden paylaşılan telefon numarası geçersiz.', 'Die per URL geteilte Telefonnummer ist ungültig.', 'Le numéro de téléphone partagé via URL est invalide.', 'Il numero di telefono condiviso tramite URL non è valido.', 'Номер телефона, переданный через URL, недействителен.'],
    ok: ['OK', 'Oke', 'OK', 'OK', 'OK', 'ठीक है', 'حسنًا', 'Tamam', 'OK', 'OK', 'OK', 'ОК'],
    elsewhere: ['The app is open in another window. Click “Use here” to use it in this window.', 'Aplikasi terbuka di jendela lain.', 'Aplikasi dibuka dalam tetingkap lain.', 'O aplicativo está aberto em outra janela.', 'La aplicación está abierta en otra ventana.', 'ऐप किसी और विंडो में खुला है.', 'التطبيق مفتوح في نافذة أخرى.', 'Uygulama başka bir pencerede açık.', 'Die App ist in einem anderen Fenster geöffnet.', 'L’application est ouverte dans une autre fenêtre.', 'L’app è aperta in un’altra finestra.', 'Приложение открыто в другом окне.'],
    useHere: ['Use here', 'Gunakan di sini', 'Guna di sini', 'Usar aqui', 'Usar aquí', 'यहाँ इस्तेमाल करें', 'استخدام هنا', 'Burada kullan', 'Hier verwenden', 'Utiliser ici', 'Usa qui', 'Использовать здесь'],
    close: ['Close', 'Tutup', 'Tutup', 'Fechar', 'Cerrar', 'बंद करें', 'إغلاق', 'Kapat', 'Schließen', 'Fermer', 'Chiudi', 'Закрыть'],
    phoneOff: ['Phone not connected', 'Telepon tidak terhubung', 'Telefon tidak disambungkan', 'Telefone não conectado', 'Teléfono no conectado', 'फ़ोन कनेक्ट नहीं है', 'الهاتف غير متصل', 'Telefon bağlı değil', 'Telefon nicht verbunden', 'Téléphone non connecté', 'Telefono non connesso', 'Телефон не подключён'],
    computerOff: ['Computer not connected', 'Komputer tidak terhubung', 'Komputer tidak disambungkan', 'Computador sem conexão', 'Ordenador sin conexión', 'कंप्यूटर कनेक्ट नहीं है', 'الكمبيوتر غير متصل', 'Bilgisayar bağlı değil', 'Computer nicht verbunden', 'Ordinateur non connecté', 'Computer non connesso', 'Компьютер не подключён'],
    newVersion: ['A new version is here.', 'Versi baru tersedia.', 'Versi baharu tersedia.', 'Uma nova versão está disponível.', 'Hay una nueva versión disponible.', 'नया वर्ज़न उपलब्ध है.', 'يتوفر إصدار جديد.', 'Yeni bir sürüm var.', 'Eine neue Version ist da.', 'Une nouvelle version est disponible.', 'È disponibile una nuova versione.', 'Доступна новая версия.'],
    refresh: ['Refresh', 'Segarkan', 'Muat semula', 'Atualizar', 'Actualizar', 'रीफ़्रेश करें', 'تحديث', 'Yenile', 'Aktualisieren', 'Actualiser', 'Aggiorna', 'Обновить'],
    attach: ['Attach', 'Lampirkan', 'Lampirkan', 'Anexar', 'Adjuntar', 'अटैच करें', 'إرفاق', 'Ekle', 'Anhängen', 'Joindre', 'Allega', 'Прикрепить'],
    send: ['Send', 'Kirim', 'Hantar', 'Enviar', 'Enviar', 'भेजें', 'إرسال', 'Gönder', 'Senden', 'Envoyer', 'Invia', 'Отправить'],
    sendFile: ['Send {} selected', 'Kirim {} yang dipilih', 'Hantar {} yang dipilih', 'Enviar {} selecionado', 'Enviar {} seleccionado', '{} चुने गए भेजें', 'إرسال {} محدد', 'Seçilen {} öğeyi gönder', '{} ausgewählte senden', 'Envoyer {} sélection', 'Invia {} selezionato', 'Отправить выбранное: {}'],
    caption: ['Add a caption', 'Tambahkan keterangan', 'Tambah kapsyen', 'Adicionar legenda', 'Añade un comentario', 'कैप्शन जोड़ें', 'إضافة تعليق', 'Başlık ekle', 'Bildunterschrift hinzufügen', 'Ajouter une légende', 'Aggiungi una didascalia', 'Добавьте подпись'],
    typeMessage: ['Type a message', 'Ketik pesan', 'Taip mesej', 'Digite uma mensagem', 'Escribe un mensaje', 'एक मैसेज टाइप करें', 'اكتب رسالة', 'Bir mesaj yazın', 'Gib eine Nachricht ein', 'Entrez un message', 'Scrivi un messaggio', 'Введите сообщение'],
    download: ['Download', 'Unduh', 'Muat turun', 'Baixar', 'Descargar', 'डाउनलोड करें', 'تنزيل', 'İndir', 'Herunterladen', 'Télécharger', 'Scarica', 'Скачать'],
    voice: ['Voice message', 'Pesan suara', 'Mesej suara', 'Mensagem de voz', 'Mensaje de voz', 'वॉइस मैसेज', 'رسالة صوتية', 'Sesli mesaj', 'Sprachnachricht', 'Message vocal', 'Messaggio vocale', 'Голосовое сообщение'],
};

let spoken = 'en';
const locale = () => locales[spoken] ?? spoken;

/** `language`: one of those here, or "browser" for the first of them that the browser asks for. */
export function speak(language) {
    const asked = navigator.languages.map((tag) => tag.split('-')[0]).find((tag) => order.includes(tag));
    spoken = language === 'browser' ? asked ?? 'en' : language;
    document.documentElement.lang = spoken;
    document.documentElement.dir = rightToLeft.includes(spoken) ? 'rtl' : 'ltr';
}

export const say = (key, ...put) => put.reduce((text, part) => text.replace('{}', part), texts[key][order.indexOf(spoken)]);

export const says = (key) => key in texts;

export const written = (number) => new Intl.NumberFormat(locale()).format(number);

export const clockTime = (ms) => new Date(ms).toLocaleTimeString(locale(), {hour: '2-digit', minute: '2-digit'});

/** In a page that is read from the right, numbers are kept together by marks that nobody sees. */
export const phoneNumber = (text) => (rightToLeft.includes(spoken) ? `\u202a${text}\u202c` : text);

/** The digits of a text as this page writes them. */
export const inOwnDigits = (text) => text.replace(/\d/g, (digit) => written(Number(digit)));
